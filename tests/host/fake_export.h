#pragma once

#if defined(_WIN32)
#define KV_FAKE_EXPORT extern "C" __declspec(dllexport)
#else
#define KV_FAKE_EXPORT extern "C" __attribute__((visibility("default")))
#endif
