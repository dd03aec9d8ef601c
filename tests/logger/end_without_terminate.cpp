#include "kevrinth_qrm_polarization_processor.h"

int main() { return kv_polarization_processor_module_initialize(); }
