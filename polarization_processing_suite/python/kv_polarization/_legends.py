# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""What stands beside the images of `plot`: colour bars, the wheel of angles, the key of ticks."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Optional

import numpy as np
from matplotlib import patheffects
from matplotlib import pyplot as plt
from matplotlib.collections import LineCollection
from matplotlib.offsetbox import AnchoredOffsetbox, AuxTransformBox, HPacker, TextArea
from matplotlib.transforms import Bbox

from kv_polarization.colours import angle_colours

if TYPE_CHECKING:
    from matplotlib.axes import Axes

#: An outline stands out from any grey.
TICK_STYLE = {
    "color": "#ffc800",
    "linewidth": 1.1,
    "capstyle": "round",
    "path_effects": [patheffects.withStroke(linewidth=2.1, foreground="black")],
}
#: Inches of a wheel with its labels, either way.
WHEEL_INCHES = 1.65
_GAP_INCHES = 0.12
_RIM_STYLE = {"color": "0.3", "linewidth": 0.8}


def colour_bar(ax: Axes, image: Any, label: str) -> None:
    """As high as the image, whatever its sides; it ends in a point where brighter pixels are."""
    above = image.get_array().max() > image.norm.vmax
    place = _axes_beside(ax, 0.15)
    ax.figure.colorbar(image, cax=place, label=label, extend="max" if above else "neither")


def colour_wheel(ax: Axes, white: float, kind: str) -> None:
    """A disc of all angles at their directions, whose radius is DoLP."""
    wheel = _axes_beside(ax, WHEEL_INCHES, WHEEL_INCHES)
    reach = np.linspace(-1, 1, 401)
    x, y = np.meshgrid(reach, -reach)
    radius = np.hypot(x, y)
    colours = angle_colours(np.degrees(np.arctan2(y, x)), radius, kind=kind)
    wheel.imshow(np.dstack((colours, np.where(radius < 1, 255, 0))), extent=(-1, 1, -1, 1))
    wheel.add_patch(plt.Circle((0, 0), 1, fill=False, **_RIM_STYLE))
    for degrees in (0, 45, 90, 135, 180):
        right, up = np.cos(np.radians(degrees)), np.sin(np.radians(degrees))
        wheel.plot((right, 1.08 * right), (up, 1.08 * up), **_RIM_STYLE)
        wheel.text(1.42 * right, 1.28 * up, f"{degrees}°", ha="center", va="center", size="small")
    _radius_scale(wheel, white)
    wheel.set(xlim=(-1.75, 1.75), ylim=(-1.9, 1.6))
    wheel.set_axis_off()


def _axes_beside(ax: Axes, width: float, height: Optional[float] = None) -> Axes:
    """Axes on the right of others, from their top down: to their lower end, or so many inches."""

    def place(*_: Any) -> Bbox:
        image, page = ax.get_position(), ax.figure.bbox
        inch_x, inch_y = ax.figure.dpi / page.width, ax.figure.dpi / page.height
        left = image.x1 + _GAP_INCHES * inch_x
        low = image.y0 if height is None else image.y1 - height * inch_y
        return Bbox.from_extents(left, low, left + width * inch_x, image.y1)

    beside = ax.inset_axes((0, 0, 1, 1))
    beside.set_axes_locator(place)
    return beside


def _radius_scale(wheel: Axes, white: float) -> None:
    """Below the wheel, from its centre to its rim."""
    low = -1.3
    wheel.plot((0, 0, 0, 1, 1, 1), np.add((0.07, -0.07, 0, 0, 0.07, -0.07), low), **_RIM_STYLE)
    for x, text in ((-0.12, "DoLP  0"), (1.12, f"{white:.3g}")):
        side = "right" if x < 0 else "left"
        wheel.text(x, low, text, ha=side, va="center", size="small")


def tick_key(ax: Axes, longest: float, white: float) -> None:
    """The longest tick and its DoLP, above the axes; it is zoomed with them."""
    sample = AuxTransformBox(ax.transData)
    sample.add_artist(LineCollection([((0, 0), (longest, 0))], **TICK_STYLE))
    text = TextArea(f"DoLP {white:.3g}", textprops={"size": "small"})
    key = AnchoredOffsetbox(
        loc="lower right",
        child=HPacker(children=[sample, text], align="center", pad=0, sep=6),
        bbox_to_anchor=(1, 1),
        bbox_transform=ax.transAxes,
        frameon=False,
        pad=0,
        borderpad=0.3,
    )
    ax.add_artist(key)
