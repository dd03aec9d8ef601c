# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Pictures, figures and tables: colours by hand, at the places where light of known angle fell."""

import base64
import pathlib
import re
import subprocess
import sys

import numpy as np
import pytest

import kv_polarization as kv
from kv_polarization.thumbnails import Row, grey, thumbnail_table

EXAMPLE = pathlib.Path(__file__).parents[2] / "examples" / "python" / "figure.py"
SIDE = 40
FIRST_CELL = {0: [[0, 135], [45, 90]], 45: [[45, 90], [0, 135]],
              90: [[90, 45], [135, 0]], 135: [[135, 0], [90, 45]]}  # fmt: skip
# Hues by hand, once round in 180 degrees: red, half way from yellow to green, cyan, and half way
# from blue to magenta.
CORNERS = {(0, 0): (0, (255, 0, 0)), (0, -1): (45, (128, 255, 0)),
           (-1, 0): (90, (0, 255, 255)), (-1, -1): (135, (128, 0, 255))}  # fmt: skip


def frame_of(phase=0, origin=(0, 0), top=4000, dolp=1.0):
    """Four quarters, polarized along 0 and 45 degrees above, 90 and 135 below."""
    quarters = np.kron([[0, 45], [90, 135]], np.ones((SIDE, SIDE)))
    y, x = np.indices(quarters.shape)
    polarizer = np.array(FIRST_CELL[phase])[(y + origin[1]) % 2, (x + origin[0]) % 2]
    share = (1 + dolp * np.cos(2 * np.radians(quarters - polarizer))) / 2
    return np.rint(top * share).astype(np.uint16)


@pytest.mark.parametrize("phase", FIRST_CELL)
@pytest.mark.parametrize("origin", [(0, 0), (1, 0), (3, 5)])
def test_colours_are_those_of_the_angles(phase, origin):
    frame = frame_of(phase, origin)
    processor = kv.Processor(phase, origin, bit_depth=12)
    shifted = kv.Processor(phase, origin, bit_depth=12, left_aligned=True)
    for samples, one in ((frame, processor), (frame << 4, shifted)):
        angle = kv.pictures.picture("angle", samples, one)
        light = kv.pictures.picture("angle_light", samples, one, dolp_white=1)
        assert angle.shape == (2 * SIDE, 2 * SIDE, 3) and angle.dtype == np.uint8
        for (row, column), (_, colour) in CORNERS.items():
            for picture in (angle, light):
                pixel = picture[row or 2, column if column else 2].astype(int)
                assert abs(pixel - colour).max() <= 2, (row, column)
        level = kv.pictures.brightness(samples, one)[0, 0]
        assert abs(level - 65535 * 8000 / 4 / 4095) <= 1  # a cell's samples sum up to 8000


def test_ranges_are_those_of_the_frame_or_as_told():
    frame, processor = frame_of(dolp=0.33), kv.Processor(bit_depth=12)
    ranges = kv.pictures.ranges(frame, processor)
    assert ranges == (0.35, 0.35)  # multiples of 0.05, rounded up
    for white, share in ((None, 0.33 / 0.35), (0.5, 0.66), (0.2, 1)):
        grey_levels = kv.pictures.picture("dolp", frame, processor, dolp_white=white)
        assert (np.ptp(grey_levels, axis=-1) == 0).all(), "grey in three channels"
        assert abs(np.median(grey_levels) - 255 * share) < 2
    ratio = kv.pictures.picture("s1_ratio", frame, processor, ratio_limit=0.33)
    ends = kv.pictures.ratio_colours([1, -1, 0])
    assert abs(ratio[5, 5].astype(int) - ends[0]).max() <= 3
    assert abs(ratio[-5, 5].astype(int) - ends[1]).max() <= 3
    red, blue, neutral = ends.astype(int)
    assert red[0] > red[2] + 100 and blue[2] > blue[0] + 100 and np.ptp(neutral) == 0


def test_all_kinds_have_the_pixels_of_the_frame():
    frame, processor = np.tile(frame_of(), (3, 4)), kv.Processor(bit_depth=12)
    for kind in kv.pictures.KINDS:
        plain = kv.pictures.picture(kind, frame, processor)
        with_legend = kv.pictures.picture(kind, frame, processor, legend=True)
        if kind != "contact_sheet":
            assert plain.shape == (*frame.shape, 3)
            assert with_legend.shape[1] > frame.shape[1]
        assert np.array_equal(with_legend[:, : plain.shape[1]], plain)


@pytest.mark.parametrize("kind, frame, arguments, part", [
    ("hue", frame_of(), {}, "contact_sheet"),
    ("angle", frame_of()[None], {}, "one frame"),
    ("intensity", frame_of()[:1, :1], {}, "2 x 2"),
    ("intensity", frame_of()[:, :3], {}, "narrow"),
    ("dolp", frame_of(), {"dolp_white": 0}, "above 0"),
    ("s1_ratio", frame_of(), {"ratio_limit": np.nan}, "above 0"),
])  # fmt: skip
def test_pictures_that_cannot_be_are_told(kind, frame, arguments, part):
    with pytest.raises(ValueError, match=part):
        kv.pictures.picture(kind, frame, kv.Processor(bit_depth=12), **arguments)


def test_strength_leads_from_neutral_to_pure():
    colours = kv.pictures.angle_colours([[0], [np.nan]], [0, 0.5, 1, 7, np.nan, -1])
    assert colours[0].tolist() == [[0] * 3, [128, 0, 0], [255, 0, 0], [255, 0, 0], [0] * 3, [0] * 3]
    assert (colours[1] == 0).all()
    white = kv.pictures.angle_colours(90, 0, kind="angle_even_light")
    assert white.tolist() == [255, 255, 255]
    assert kv.pictures.colormap(4).tolist() == kv.pictures.angle_colours([90, 135, 0, 45]).tolist()
    with pytest.raises(ValueError, match="angle_even"):
        kv.pictures.angle_colours(0, kind="dolp")


class TestFigures:
    """What matplotlib was told, at places that are known."""

    @pytest.fixture(autouse=True)
    def _backend(self):
        matplotlib = pytest.importorskip("matplotlib")
        matplotlib.use("Agg")
        yield
        matplotlib.pyplot.close("all")

    def test_the_wheel_has_the_angles_at_their_directions(self):
        from kv_polarization import plot

        ax = plot.angle(frame_of(), kv.Processor(bit_depth=12))
        assert ax.get_ylim()[0] > ax.get_ylim()[1], "rows go downwards"
        disc = np.asarray(ax.child_axes[-1].images[0].get_array()).astype(int)
        centre = disc.shape[0] // 2
        reach = int(0.98 * centre)
        for degrees, colour in CORNERS.values():
            for turned in (degrees, degrees + 180):
                right, up = np.cos(np.radians(turned)), np.sin(np.radians(turned))
                pixel = disc[round(centre - reach * up), round(centre + reach * right)]
                assert abs(pixel[:3] - colour).max() <= 8 and pixel[3] == 255, turned
        assert disc[centre, centre, :3].max() <= 2 and disc[0, 0, 3] == 0

    def test_ticks_lie_along_the_angles(self):
        from kv_polarization import plot

        ax = plot.ticks(frame_of(dolp=0.5), kv.Processor(bit_depth=12), dolp_white=1, spacing=20)
        ends = np.array([path.vertices for path in ax.collections[0].get_paths()])
        assert ends.shape == (16, 2, 2)
        for (row, column), (degrees, _) in CORNERS.items():
            inside = (ends.mean(axis=1) > SIDE) == (column == -1, row == -1)
            for start, end in ends[inside.all(axis=1)]:
                right, down = end - start
                assert abs(np.hypot(right, down) - 0.5 * 0.9 * 20) < 1
                turn = np.degrees(np.arctan2(-down, right)) - degrees
                assert abs((turn + 90) % 180 - 90) < 6, "but for cells at the quarters' borders"

    def test_figures_use_the_axes_that_they_are_given(self):
        from matplotlib import pyplot

        from kv_polarization import plot

        _, axes = pyplot.subplots(1, 3)
        frame, processor = frame_of(dolp=0.48), kv.Processor(bit_depth=12)
        for ax, draw in zip(axes, (plot.intensity, plot.dolp, plot.angle)):
            assert draw(frame, processor, ax) is ax
        shown = axes[1].images[0].get_array()
        assert abs(shown[5, 5] - 0.48) < 0.01 and axes[1].images[0].norm.vmax == 0.5
        assert abs(axes[0].images[0].get_array()[0, 0] - 100 * 2000 / 4095) < 0.01
        for bad in ({"dolp_white": 2}, {"kind": "dolp"}):
            with pytest.raises(ValueError):
                plot.angle(frame, processor, **bad)

    def test_the_example_draws_a_sheet(self, tmp_path):
        from matplotlib import image

        kv.write(tmp_path / "frame.pgm", frame_of(90), bit_depth=12)
        for name, *arguments in (("a.png",), ("b.png", "frame.pgm", "--phase", "90")):
            command = [sys.executable, EXAMPLE, name, *arguments]
            subprocess.run(command, cwd=tmp_path, check=True)
            assert np.ptp(image.imread(tmp_path / name)) == 1


def test_figures_without_matplotlib_tell_the_cure():
    code = "import sys; sys.modules['matplotlib'] = None; import kv_polarization.plot"
    run = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=False)
    assert "pip install matplotlib" in run.stderr.splitlines()[-1]


def test_planes_show_themselves_in_notebooks(tmp_path):
    frames = np.stack([np.tile(frame_of(), (5, 10)), np.zeros((400, 800), np.uint16)])
    planes = kv.Processor(bit_depth=12).transform(frames, kv.PLANES, output_max=1000)
    page = planes._repr_html_()
    for name, plane in planes.asdict().items():
        assert name in page and " × ".join(map(str, plane.shape)) in page
    pictures = re.findall(r"data:image/png;base64,([^']*)'", page)
    assert len(pictures) == 6
    (tmp_path / "azimuth.png").write_bytes(base64.b64decode(pictures[4]))
    azimuth = kv.read(tmp_path / "azimuth.png").astype(int)
    assert azimuth.shape == (100, 200, 3)
    for row, column, colour in ((5, 5, (255, 0, 0)), (5, 15, (128, 255, 0))):
        assert abs(azimuth[row, column] - colour).max() <= 2
    assert "<img" not in kv.Processor().transform(frames[:0])._repr_html_()
    maps = kv.Processor(bit_depth=12).maps(frames, ("s1", "angle", "quality"))._repr_html_()
    assert maps.count("<img") == 3 and "counts" in maps and "float32" in maps


def test_texts_of_tables_are_no_html():
    evil = "<script>'\"&"
    page = thumbnail_table(evil, [Row(evil, np.zeros((2, 2)), evil, grey)])
    assert "<script" not in page and page.count("&lt;script&gt;&#x27;&quot;&amp;") == 4
