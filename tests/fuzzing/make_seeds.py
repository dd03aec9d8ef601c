#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Makes the seeds of the fuzzers: small inputs of every form that is read. Makes the same ones each time.

    make_seeds.py [FOLDER]     the folder of the seeds; tests/fuzzing/seeds by default

Files are put together here byte by byte, and not by the toolkit, whose writers make some forms only.
Seeds of other names, such as those of faults that were mended, stay."""

import hashlib
import io
import itertools
import json
import pathlib
import re
import struct
import sys
import zlib

import numpy as np

SEEDS = pathlib.Path(
    sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).with_name("seeds")
)

# Of targets that read choices: the bytes behind them are random, but the same each time.
RANDOM = np.random.default_rng(1)


def seed(target, name, content):
    folder = SEEDS / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(content)


def samples(rows, columns, dtype, channels=1):
    shape = (rows, columns) if channels == 1 else (rows, columns, channels)
    count = rows * columns * channels
    return (np.arange(count) * 2654435761 % 65521).astype(dtype).reshape(shape)


def chunk(kind, content):
    checked = kind + content
    return struct.pack(">I", len(content)) + checked + struct.pack(">I", zlib.crc32(checked))


def png(rows, columns, depth, colour, *, filter_kind=0, level=9, extra=b"", parts=1, interlace=0):
    """A PNG; its rows hold the filter's bytes as they come, since any are right."""
    channels = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}[colour]
    row = (columns * channels * depth + 7) // 8
    content = b"".join(
        bytes([filter_kind % 5 if filter_kind < 5 else number % 5])
        + bytes((31 * number + 7 * place) % 256 for place in range(row))
        for number in range(rows)
    )
    stream = zlib.compress(content, level)
    size = -(-len(stream) // parts)
    data = b"".join(chunk(b"IDAT", stream[place : place + size])
                    for place in range(0, len(stream), size))  # fmt: skip
    header = struct.pack(">IIBBBBB", columns, rows, depth, colour, 0, 0, interlace)
    palette = chunk(b"PLTE", bytes(range(48))) if colour == 3 else b""
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + extra + palette + data
            + chunk(b"IEND", b""))  # fmt: skip


def png_seeds():
    for depth, colour in [(8, 0), (16, 0), (1, 0), (4, 0), (8, 2), (16, 2), (8, 3), (8, 4), (8, 6)]:
        seed("png", f"depth_{depth}_colour_{colour}", png(5, 7, depth, colour))
    for kind in range(6):
        seed("png", f"filter_{kind}", png(6, 9, 16, 0, filter_kind=kind))
        seed("png", f"filter_{kind}_of_bytes", png(6, 40, 8, 0, filter_kind=kind, level=0))
    seed("png", "several_parts", png(9, 9, 16, 0, parts=4))
    seed("png", "interlaced", png(8, 8, 8, 0, interlace=1))
    seed("png", "significant_bits", png(4, 4, 16, 0, extra=chunk(b"sBIT", b"\x0c")))
    texts = chunk(b"tEXt", b"Title\0A frame") + chunk(b"tEXt", b"Provenance\0{}")
    texts += chunk(b"iTXt", b'Provenance\0\0\0\0\0{"version": 1}')
    texts += chunk(b"zTXt", b"Comment\0\0" + zlib.compress(b"text"))
    seed("png", "texts", png(4, 4, 8, 0, extra=texts + chunk(b"gAMA", b"\0\0\xb1\x8f")))
    seed(
        "png",
        "far_too_large",
        png(2, 2, 16, 0).replace(struct.pack(">II", 2, 2), b"\x7f\xff\xff\xff" * 2),
    )
    seed("png", "truncated", png(9, 9, 16, 0)[:-30])


TIFF_TYPES = {1: "B", 2: "B", 3: "H", 4: "I", 16: "Q"}


def tiff(pages, *, order="<", big=False):
    """A TIFF of pages, each a list of (tag, type, values) and a list of strips."""
    offset = order + ("Q" if big else "I")
    place = 16 if big else 8
    mark = b"II" if order == "<" else b"MM"
    body = b""
    links = []
    for tags, strips in pages:
        offsets = []
        for strip in strips:
            offsets.append(place + len(body))
            body += strip + b"\0" * (len(strip) % 2)
        entries = [*tags, (273, 4, offsets), (279, 4, [len(strip) for strip in strips])]
        directory = b""
        for tag, kind, values in sorted(entries):
            content = struct.pack(f"{order}{len(values)}{TIFF_TYPES[kind]}", *values)
            room = 8 if big else 4
            if len(content) > room:
                where = place + len(body)
                body += content + b"\0" * (len(content) % 2)
                content = struct.pack(offset, where)
            directory += struct.pack(order + ("HHQ" if big else "HHI"), tag, kind, len(values))
            directory += content.ljust(room, b"\0")
        links.append(place + len(body))
        body += struct.pack(order + ("Q" if big else "H"), len(entries)) + directory + b"LINK"
        body += b"" if not big else b"LINK"
    start = mark + struct.pack(order + "H", 43 if big else 42)
    start += struct.pack(order + "HH", 8, 0) if big else b""
    links.append(0)
    for link in links[1:]:
        body = body.replace(b"LINKLINK" if big else b"LINK", struct.pack(offset, link), 1)
    return start + struct.pack(offset, links[0]) + body


def page(rows, columns, bits, *, compression=1, pack=bytes, channels=1, kind=1, rows_per_strip=None,
         extra=(), content=None):  # fmt: skip
    rows_per_strip = rows_per_strip or rows
    row = (columns * channels * bits + 7) // 8
    if content is None:
        content = bytes(13 * place % 251 for place in range(rows * row))
    strips = [pack(content[first * row : (first + rows_per_strip) * row])
              for first in range(0, rows, rows_per_strip)]  # fmt: skip
    tags = [(256, 3, [columns]), (257, 3, [rows]), (258, 3, [bits] * channels),
            (259, 3, [compression]), (262, 3, [kind]), (277, 3, [channels]),
            (278, 3, [rows_per_strip]), *extra]  # fmt: skip
    return tags, strips


def pack_bits(content):
    return b"".join(bytes([len(run) - 1]) + run
                    for run in (content[place : place + 128] for place in range(0, len(content), 128)))  # fmt: skip


def tiff_seeds():
    for bits, order, big in itertools.product((8, 12, 16, 32), "<>", (False, True)):
        name = f"bits_{bits}_{'little' if order == '<' else 'big'}{'_bigtiff' if big else ''}"
        seed("tiff", name, tiff([page(5, 6, bits)], order=order, big=big))
    deflate = {"pack": zlib.compress, "compression": 8}
    seed("tiff", "deflate", tiff([page(8, 9, 16, **deflate)]))
    seed("tiff", "deflate_adobe", tiff([page(8, 9, 8, pack=zlib.compress, compression=32946)]))
    seed("tiff", "deflate_predicted", tiff([page(8, 9, 16, **deflate, extra=[(317, 3, [2])])]))
    seed("tiff", "deflate_strips", tiff([page(9, 8, 16, **deflate, rows_per_strip=2)]))
    seed("tiff", "pack_bits", tiff([page(8, 8, 8, compression=32773, pack=pack_bits)]))
    seed("tiff", "lzw_damaged", tiff([page(8, 8, 8, compression=5)]))
    seed("tiff", "strips", tiff([page(9, 8, 16, rows_per_strip=3)]))
    seed("tiff", "pages", tiff([page(3, 4, 16), page(2, 2, 8), page(4, 4, 16, **deflate)]))
    seed("tiff", "floats", tiff([page(4, 4, 32, channels=2, extra=[(339, 3, [3, 3])])]))
    seed("tiff", "one_float", tiff([page(4, 4, 32, extra=[(339, 3, [3])])]))
    seed("tiff", "colours", tiff([page(4, 4, 8, channels=3, kind=2)]))
    seed("tiff", "white_is_zero", tiff([page(4, 4, 8, kind=0)]))
    seed("tiff", "turned", tiff([page(4, 6, 16, extra=[(274, 3, [6])])]))
    seed(
        "tiff",
        "text",
        tiff([page(4, 4, 16, extra=[(270, 2, b'{"version": 1}\0'), (269, 2, b"Title\0")])]),
    )
    seed("tiff", "far_too_large", tiff([page(2, 2, 16, content=b"abcdefgh", extra=[])]).replace(
        struct.pack("<HHIH", 257, 3, 1, 2), struct.pack("<HHIH", 257, 3, 1, 65535)))  # fmt: skip
    seed("tiff", "tiles", tiff([([(256, 3, [16]), (257, 3, [16]), (258, 3, [8]), (259, 3, [1]),
         (262, 3, [1]), (277, 3, [1]), (322, 3, [16]), (323, 3, [16]), (324, 4, [8]),
         (325, 4, [256])], [bytes(256)])]))  # fmt: skip


def pgm_seeds():
    for greatest, width in [(255, 1), (4095, 2), (65535, 2), (1, 1)]:
        seed("pgm", f"greatest_{greatest}", b"P5\n6 4\n%d\n" % greatest + bytes(range(24 * width)))
    seed("pgm", "comments", b"P5 # a comment\n# another\n2\t2 #\n255 " + b"abcd")
    seed("pgm", "several", (b"P5 2 2 255\nabcd" * 3) + b"P5 2 2 1023\nabcdefgh")
    seed("pgm", "colours", b"P6 2 2 255\n" + bytes(range(12)))
    seed("pgm", "text", b"P2 2 2 255\n1 2 3 4\n")
    seed("pgm", "far_too_large", b"P5 999999999 999999999 65535\nab")


def npy(array, version=(1, 0)):
    stream = io.BytesIO()
    np.lib.format.write_array(stream, array, version=version)
    return stream.getvalue()


def npy_seeds():
    for dtype in ["|u1", "<u2", ">u2", "<f4", "<f8", "<i2", "|b1"]:
        seed(
            "npy",
            f"frame_{dtype[1:]}_{'big' if dtype[0] == '>' else 'little'}",
            npy(samples(4, 6, dtype)),
        )
    seed("npy", "stack", npy(samples(12, 5, "<u2").reshape(3, 4, 5)))
    seed("npy", "pictures", npy(samples(6, 4, "|u1", 3)))
    seed("npy", "pictures_of_images", npy(samples(6, 4, "|u1", 3).reshape(2, 3, 4, 3)))
    seed("npy", "pairs", npy(samples(6, 4, "<f4", 2)))
    seed("npy", "version_2", npy(samples(4, 4, "<u2"), (2, 0)))
    seed("npy", "version_3", npy(samples(4, 4, "<u2"), (3, 0)))
    seed("npy", "columns_first", npy(np.asfortranarray(samples(4, 6, "<u2"))))
    seed("npy", "five_sides", npy(np.zeros((1, 1, 2, 2, 2), "<u2")))
    whole = npy(samples(4, 6, "<u2"))
    seed("npy", "far_too_large", whole.replace(b"(4, 6)", b"(4294967296, 4294967296)"))
    seed("npy", "no_numbers", whole[:128])
    # Of texts that a message repeats.
    seed("npy", "line_break_in_key", whole.replace(b"'descr'", b"'de\ncr'"))
    seed("npy", "line_break_in_type", whole.replace(b"'<u2'", b"'<\nu'"))


def raw_seeds():
    """A byte for the pixel format, two numbers of 4 bytes for the sides, frames. The first byte of
    all tells whether sides may be great."""
    bits = [8, 16, 16, 16, 16, 16, 16, 16, 10, 12, 12, 12]
    for pixel_format, stored in enumerate(bits):
        for columns, rows in [(6, 4), (5, 3)]:
            size = (columns * rows * stored + 7) // 8
            head = struct.pack("<BBii", pixel_format, 0, columns, rows)
            seed("raw", f"format_{pixel_format}_{columns}x{rows}", head + RANDOM.bytes(2 * size))
    seed("raw", "far_too_large", struct.pack("<BBii", 4, 7, 1 << 29, 1 << 29) + b"abcd")


CLASSES = [0, 45, 90, 135]
MAPS = ["black", "gain", "diattenuation", "orientation", "gain_error", "diattenuation_error",
        "orientation_error", "bad"]  # fmt: skip


def calibration_maps(rows, columns):
    ones = np.ones((rows, columns), "<f4")
    ripple = (samples(rows, columns, "<f4") % 97 - 48) / 4800
    maps = dict(zip(MAPS, [20 * ones, ones + ripple, 0.98 * ones - abs(ripple), 20 * ripple,
                           0.002 * ones, 0.003 * ones, 0.1 * ones]))  # fmt: skip
    return {**maps, "bad": np.zeros((rows, columns), "|u1")}


def calibration(rows=4, columns=6, *, change=None, indent=2):
    """The JSON, and the bytes of the maps in their order."""
    maps = {
        name: npy(values.astype(values.dtype))
        for name, values in calibration_maps(rows, columns).items()
    }
    measured = {"value": 1.0, "error": 0.001}
    record = {
        "format": "calibration of a polarization sensor", "version": 1, "units": "",
        "camera": "a camera", "date": "2026-01-01", "software": "kv-polarize",
        "width": columns, "height": rows, "mosaic": {"phase": 90, "x_origin": 0, "y_origin": 0},
        "bit_depth": 12, "clip_level": 4095, "noise": {"gain": 0.37, "read_noise": 2.3},
        "source_offset": 1.5, "source_dolp": 0.999, "angles_solved": False, "condition": 1.43,
        "classes": [{"nominal_angle": angle, "pixels": rows * columns // 4,
                     "black": {"value": 20.0, "error": 0.01}, "gain": measured,
                     "diattenuation": {"value": 0.98, "error": 0.001},
                     "orientation": {"value": angle + 0.1, "error": 0.01}, "gain_scatter": 0.01,
                     "diattenuation_scatter": 0.003, "orientation_scatter": 0.2}
                    for angle in CLASSES],
        "findings": [{"name": "cross-validation", "found": 0.1, "expected": 0.1, "unit": "",
                      "good": True, "verdict": "good"}],
        "frames": [{"name": "a.tiff", "kind": "polarized", "angle": 10.0, "used": True,
                    "refusal": "", "level": 1000.0, "class_means": [1, 2, 3, 4],
                    "angle_deviation": 0.01, "excess": 1.0}],
        "maps": {name: {"file": f"camera.{name}.npy", "type": "uint8" if name == "bad" else "float32",
                        "unit": "", "sha256": hashlib.sha256(maps[name]).hexdigest()}
                 for name in MAPS},
    }  # fmt: skip
    if change:
        change(record, maps)
    return json.dumps(record, indent=indent).encode(), [maps[name] for name in MAPS]


def calibration_seed(name, text, maps, sums=0):
    content = struct.pack("<BH", sums, len(text)) + text
    seed(
        "calibration",
        name,
        content + b"".join(struct.pack("<H", len(part)) + part for part in maps),
    )


def calibration_seeds():
    calibration_seed("sound", *calibration())
    calibration_seed("sums_are_made", *calibration(2, 2), sums=1)
    calibration_seed("one_line", *calibration(2, 4, indent=None))
    for name, path, value in [("nan_gain", ("noise", "gain"), float("nan")), ("wide", ("width",), 1 << 30),
                              ("text_for_number", ("height",), "4"), ("line_break", ("format",), "a\nb"),
                              ("line_break_in_map", ("maps", "gain", "type"), "a\rb"),
                              ("far_condition", ("condition",), 1e308)]:  # fmt: skip

        def change(record, _maps, path=path, value=value):
            for key in path[:-1]:
                record = record[key]
            record[path[-1]] = value

        calibration_seed(name, *calibration(2, 2, change=change), sums=1)
    calibration_seed("deep", b"[" * 2000, [])

    def bad_pixels(_record, maps):
        bad = np.zeros((4, 6), "|u1")
        bad[1, 2] = bad[3, 3] = bad[2, 3] = 9
        maps["bad"] = npy(bad)

    calibration_seed("bad_pixels", *calibration(change=bad_pixels), sums=1)


def manifest_seeds():
    """The first byte chooses a manifest, 0, or a list of regions, 1."""
    seed(
        "manifest",
        "manifest",
        b'\0file,kind,angle\na.tiff,polarized,0\nb.tiff,dark,\n# no\n\n"c,d.tiff", flat ,\n',
    )
    seed("manifest", "other_columns", b'\0kind,exposure,angle,file\r\npolarized,3,2.5e1,"a""b"\r\n')
    seed("manifest", "bad_angle", b"\0file,kind,angle\na,polarized,nan\n")
    seed("manifest", "open_quote", b'\0file,kind,angle\n"a,polarized,0\n')
    seed(
        "manifest",
        "regions",
        b"\1name,column,row,width,height\nfilm,1,2,3,4\nsky,0,0,99999999999,1\n",
    )
    seed(
        "manifest", "regions_without_names", b"\1column,row,width,height\n1,2,3,4\n\xff\xfe,0,0,0\n"
    )


def choice_seeds():
    for number in range(24):
        seed(
            "transform",
            f"sound_{number}",
            bytes([RANDOM.integers(1, 64), 2 * (number % 4)]) + RANDOM.bytes(90),
        )
        seed("transform", f"faulty_{number}", bytes([RANDOM.integers(0, 64), 1]) + RANDOM.bytes(60))
    for kind in range(14):
        sides = struct.pack("<HH", 90, 150) if kind != 13 else b"\x14\x11"
        seed("pictures", f"kind_{kind}", bytes([kind]) + sides + RANDOM.bytes(160))
        seed(
            "pictures",
            f"small_{kind}",
            bytes([kind]) + struct.pack("<HH", 3, 1) + RANDOM.bytes(120),
        )


def words(text, content=b"", table=None):
    """A command line as the target reads it: a word of the table by its number, others by their bytes."""
    command, *rest = text.split()
    names = ["transform", "measure", "view", "info", "bench", "again", "simulate", "calibrate",
             "identify", "compare", "manual", "completion"]  # fmt: skip
    line = bytes([0, names.index(command), len(rest)])
    for word in rest:
        line += (
            bytes([table.index(word)]) if word in table else bytes([255, len(word)]) + word.encode()
        )
    return line + content


def table_of_words():
    text = pathlib.Path(__file__).with_name("command_words.h").read_text(encoding="utf-8")
    body = text[text.index("kWords =") : text.rindex("});")]
    return re.sub("//.*", "", body).split('"')[1::2]


def command_line_seeds():
    table = table_of_words()
    lines = {
        "transform": "transform a.png -o new", "pictures": "transform b.tiff -o new --pictures all",
        "calibrated": "transform d.pgm --calibration camera.json -o new",
        "stacks": "transform night.tiff -o new --stack planes --format tiff",
        "resumed": "transform stack -o new --resume -j 2 --planes dolp,azimuth",
        "raw": "transform e.raw --width=16 --height=12 --raw-format Mono8 -o new",
        "names": "transform * -o new --names {name}_{plane} --overwrite --json",
        "measure": "measure a.png --region 2,2,8,8 --as=csv",
        "regions": "measure stack --calibration camera.json --regions=any", "view": "view a.png -o new.png",
        "info": "info * --json", "bench": "bench --planes dolp", "again": "again planes/a_dolp.png",
        "simulate": "simulate --frames=2 -o new.tiff", "sensor": "simulate --sensor=1 -o new.npy",
        "calibrate": "calibrate --manifest=stack/stack.csv -o new.json",
        "identify": "identify a.png b.tiff --turned=20", "compare": "compare a.png b.tiff --json",
        "folders": "compare planes planes --bytes", "manual": "manual --help",
        "completion": "completion bash", "any": "info any --page 1",
    }  # fmt: skip
    for name, text in lines.items():
        seed("command_line", name, words(text, b"P5 2 2 255\nabcd", table))
    regions = b"name,column,row,width,height\nfilm,1,2,3,4\n"
    seed("command_line", "regions", words(lines["regions"], regions, table))


def python_seeds():
    for number in range(40):
        seed("python", f"call_{number}", bytes([number]) + RANDOM.bytes(60))


for make in (png_seeds, tiff_seeds, pgm_seeds, npy_seeds, raw_seeds, calibration_seeds, manifest_seeds,
             choice_seeds, command_line_seeds, python_seeds):  # fmt: skip
    make()
