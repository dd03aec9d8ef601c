# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Image files: what is written comes back, and what cannot be is told."""

import errno
import multiprocessing
import os
import pathlib
import pickle
import threading

import numpy as np
import pytest

import kv_polarization as kv

TYPES = (np.uint8, np.uint16, np.float32)


def image_of(*shape, dtype=np.uint16):
    values = np.random.default_rng(5).integers(0, 256 ** min(np.dtype(dtype).itemsize, 2), shape)
    return (values / 7 - 100 if dtype == np.float32 else values).astype(dtype)


@pytest.mark.parametrize("ending, dtypes, shapes", [
    (".png", TYPES[:2], [(5, 7)]),
    (".png", TYPES[:1], [(5, 7, 3)]),
    (".tiff", TYPES, [(5, 7), (3, 5, 7)]),
    (".tif", TYPES[:1], [(5, 7, 3)]),
    (".TIF", TYPES[2:], [(5, 7, 2), (4, 5, 7, 2)]),
    (".pgm", TYPES[:2], [(5, 7), (3, 5, 7)]),
    (".pnm", TYPES[:1], [(5, 7, 3)]),
    (".npy", TYPES, [(5, 7), (3, 5, 7)]),
    (".npy", TYPES[2:], [(5, 7, 2), (5, 7, 4), (4, 5, 7, 3)]),
    (".npy", TYPES[:1], [(5, 7, 3)]),
])  # fmt: skip
def test_what_is_written_comes_back(tmp_path, ending, dtypes, shapes):
    for dtype in dtypes:
        for shape in shapes:
            path = tmp_path / ("Gitter λ½ \U0001f4f7" + ending)
            image = image_of(*shape, dtype=dtype)
            for given in (image, np.asfortranarray(image), np.repeat(image, 2, axis=0)[::2]):
                kv.write(path, given, title="Prüfung", provenance="by hand, äöü")
                again = kv.read(str(path))
                assert again.dtype == dtype and again.shape == shape
                assert np.array_equal(again, image), (dtype, shape)
                assert kv.provenance_of(path) == "by hand, äöü"
            left = {path.name} | ({path.name + ".json"} if ending == ".npy" else set())
            assert set(os.listdir(tmp_path)) == left, "temporary files are left"
            if ending == ".npy":
                assert np.array_equal(np.load(path), image)


def test_compression_changes_the_size_alone(tmp_path):
    image = np.full((200, 300), 7, np.uint16)
    sizes = {}
    for compression in (None, "none", "fast", "small"):
        kv.write(tmp_path / "flat.png", image, compression=compression)
        assert np.array_equal(kv.read(tmp_path / "flat.png"), image)
        sizes[compression] = os.path.getsize(tmp_path / "flat.png")
    assert sizes["none"] > image.nbytes > 10 * sizes["fast"] and sizes[None] == sizes["fast"]


@pytest.mark.parametrize("image, arguments, error, part", [
    (np.ones((4, 4), bool), {}, TypeError, "numpy.uint8"),
    (np.ones((4, 4), np.float64), {}, TypeError, "numpy.float32"),
    (np.ones((4, 4), np.int64), {}, TypeError, "numpy.uint16"),
    (np.ones((4, 4), ">u2"), {}, TypeError, "newbyteorder"),
    (np.ones((4, 4), complex), {}, TypeError, "not complex128"),
    ([[1, 2]], {}, TypeError, "numpy.asarray"),
    (np.ma.masked_array(image_of(4, 4)), {}, TypeError, "mask"),
    (image_of(4), {}, ValueError, "1 axes"),
    (image_of(2, 4, 4, 3), {}, ValueError, "float32"),
    (image_of(0, 4), {}, ValueError, "side of 0"),
    (image_of(0, 4, 5), {}, ValueError, "no images"),
    (image_of(4, 4), {"bit_depth": 12}, ValueError, "above 4095"),
    (image_of(4, 4), {"bit_depth": 17}, ValueError, "1 to 16"),
    (image_of(4, 4), {"compression": "lzw"}, ValueError, "none, fast, small"),
    (image_of(4, 4, dtype=np.float32), {"bit_depth": 12}, ValueError, "leave it out"),
    (image_of(4, 4, dtype=np.uint8), {"bit_depth": 12}, ValueError, "1 to 8"),
])  # fmt: skip
def test_what_cannot_be_written_is_told(tmp_path, image, arguments, error, part):
    path = tmp_path / "image.tiff"
    kv.write(path, image_of(3, 3))
    with pytest.raises(error) as caught:
        kv.write(path, image, **arguments)
    assert part in str(caught.value)
    assert np.array_equal(kv.read(path), image_of(3, 3)), "the earlier file is gone"
    assert os.listdir(tmp_path) == ["image.tiff"]


def test_places_that_cannot_be_written_to_are_told(tmp_path):
    image = image_of(4, 4)
    kv.write(tmp_path / "file.png", image)
    cases = {
        "missing/image.png": FileNotFoundError,
        "file.png/image.png": NotADirectoryError,
        "": ValueError,
        "image.jpg": ValueError,
        "image\0.png": ValueError,
    }
    for name, error in cases.items():
        with pytest.raises(error):
            kv.write(f"{tmp_path}/{name}", image)
    (tmp_path / "folder.png").mkdir()
    with pytest.raises(IsADirectoryError) as caught:
        kv.write(tmp_path / "folder.png", image)
    assert caught.value.filename == str(tmp_path / "folder.png")
    with pytest.raises(ValueError, match="png files hold one image.*tiff"):
        kv.write(tmp_path / "stack.png", image_of(2, 4, 4))
    with pytest.raises(ValueError, match="png files hold no planes of floats"):
        kv.write(tmp_path / "floats.png", image_of(4, 4, dtype=np.float32))
    unnamed = os.fsdecode(os.fsencode(tmp_path) + b"/\xff.png")  # no text in any encoding
    kv.write(unnamed, image)
    assert np.array_equal(kv.read(os.fsencode(unnamed)), image)
    with pytest.raises(OSError):
        kv.write(unnamed + "/x.png", image)


@pytest.mark.parametrize("open_file", [kv.read, kv.open_frames])
def test_files_that_cannot_be_read_are_told(tmp_path, open_file):
    with pytest.raises(FileNotFoundError) as caught:
        open_file(tmp_path / "missing.png")
    assert caught.value.errno == errno.ENOENT and "missing.png" in str(caught.value)
    with pytest.raises(IsADirectoryError):
        open_file(tmp_path)
    for ending in (".png", ".tiff", ".pgm", ".npy"):
        path = tmp_path / ("damaged" + ending)
        kv.write(path, image_of(40, 50))
        whole = path.read_bytes()
        for content in (b"", whole[:6], whole[: len(whole) // 2], b"text" + whole):
            path.write_bytes(content)
            with pytest.raises(OSError) as caught:
                open_file(path)[0]
            assert str(path) in str(caught.value)


def test_images_of_different_sizes_are_no_array(tmp_path):
    path = tmp_path / "mixed.pgm"
    path.write_bytes(b"P5 2 1 255\n\x01\x02" + b"P5 1 2 4095\n\x03\x04\x05\x06")
    with pytest.raises(ValueError, match="open_frames"):
        kv.read(path)
    frames = kv.open_frames(path)
    assert frames.shape == (2, 1, 2) and frames.dtype == np.uint8 and frames.bit_depth == 8
    assert [frame.tolist() for frame in frames] == [[[1, 2]], [[0x0304], [0x0506]]]
    assert frames[1].dtype == np.uint16
    with pytest.raises(ValueError, match="one by one"):
        frames[:]


# Samples 0x123, 0x456 and so on, by hand as the formats lay their bits.
@pytest.mark.parametrize("pixel_format, stored, samples", [
    ("Mono8", "12 34", [0x12, 0x34]),
    ("Mono12", "23 01 56 04", [0x123, 0x456]),
    ("Mono16", "34 12 78 56", [0x1234, 0x5678]),
    ("Mono12Left", "30 12 60 45", [0x123, 0x456]),
    ("Mono12p", "23 61 45", [0x123, 0x456]),
    ("Mono12Packed", "12 63 45", [0x123, 0x456]),
    ("Mono10p", "ff 07 f0 03 ff", [0x3ff, 0x001, 0x03f, 0x3fc]),
    ("Mono10Packed", "ff 13 00", [0x3ff, 0x001]),
])  # fmt: skip
def test_headerless_frames_are_unpacked(tmp_path, pixel_format, stored, samples):
    path = tmp_path / "frames.raw"
    path.write_bytes(bytes.fromhex(stored) * 2)
    raw = kv.RawShape(len(samples), 1, pixel_format)
    dtype = np.uint8 if pixel_format == "Mono8" else np.uint16
    frames = kv.read(path, raw=raw)
    assert frames.dtype == dtype and frames.tolist() == [[samples]] * 2
    depth = int("".join(filter(str.isdigit, pixel_format)))
    assert kv.open_frames(path, raw=raw).bit_depth == depth


def test_shapes_that_do_not_fit_are_told(tmp_path):
    path = tmp_path / "frames.raw"
    kv.write(path, image_of(4, 5))
    assert np.array_equal(kv.read(path, raw=kv.RawShape(5, 4)), image_of(4, 5))
    for raw, error, part in [
        (kv.RawShape(5, 3), OSError, "multiple of 30"),
        (kv.RawShape(0, 3), ValueError, "from 1"),
        (kv.RawShape(2**40, 2**40), ValueError, "from 1"),
        (kv.RawShape(5, 4, "Mono13"), ValueError, "Mono12Packed"),
        (kv.RawShape(2.5, 4), TypeError, "float"),
    ]:
        with pytest.raises(error) as caught:
            kv.read(path, raw=raw)
        assert part in str(caught.value)


@pytest.fixture(name="stack")
def stack_of_frames(tmp_path):
    frames = image_of(6, 4, 8) >> 4
    kv.write(tmp_path / "stack.tiff", frames, bit_depth=12)
    return tmp_path / "stack.tiff", frames


def test_frames_are_a_sequence(stack):
    path, frames = stack
    with kv.open_frames(path) as file:
        assert (file.shape, file.dtype, file.bit_depth) == ((6, 4, 8), np.uint16, 12)
        assert np.array_equal(list(file), frames) and np.array_equal(file, frames)
        for index in (0, -1, np.int64(3), slice(1, -1, 2), slice(None, None, -1), slice(3, 3),
                      (2, 1), (slice(1, 4), ..., slice(0, 8, 2)), (-1, ..., 5)):  # fmt: skip
            assert np.array_equal(file[index], frames[index]), index
        for index, error in ((6, IndexError), (-7, IndexError), (1.5, TypeError)):
            with pytest.raises(error):
                file[index]
    with pytest.raises(ValueError, match="closed"):
        file[0]


def _mean(file):
    return float(np.mean(file[-1]))


def test_frames_are_read_from_threads_and_processes(stack):
    path, frames = stack
    file = kv.open_frames(pathlib.Path(path))
    wrong = []

    def read_some(seed):
        for place in np.random.default_rng(seed).integers(0, 6, 200):
            if not np.array_equal(file[place], frames[place]):
                wrong.append(place)

    threads = [threading.Thread(target=read_some, args=(seed,)) for seed in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong
    assert np.array_equal(pickle.loads(pickle.dumps(file))[2], frames[2])
    with multiprocessing.get_context("fork").Pool(2) as pool:
        assert pool.map(_mean, [file] * 4) == [frames[-1].mean()] * 4
