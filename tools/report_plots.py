#!/usr/bin/env python3
"""Makes the print-quality report page from the CSV files of `inkdot report`.

    python3 tools/report_plots.py OUTDIR      # writes OUTDIR/report.html

The page is self-contained: every figure is a PNG embedded as base64, so it
can be mailed or opened from anywhere. Needs matplotlib and numpy
(Debian: python3-matplotlib python3-numpy).
"""
import base64
import csv
import html
import io
import math
import os
import sys
from collections import OrderedDict, defaultdict

import matplotlib

matplotlib.use("Agg")  # no display: figures go straight to PNG bytes
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402

# Ink colours as they look printed solid on white paper (sRGB); the same
# values as the print preview, so the crops look like the preview enlarged.
INK_RGB = OrderedDict(
    cyan=(0, 166, 226), magenta=(222, 30, 129), yellow=(255, 226, 0), black=(35, 31, 32)
)
# Line colours for the tone plots: yellow ink is drawn darker to stay visible;
# on the gray ramp C, M and Y run together, so they differ in dash as well.
INK_LINE = dict(cyan="#00a6e2", magenta="#de1e81", yellow="#d4b000", black="#231f20")
INK_DASH = dict(cyan="-", magenta="--", yellow=":", black="-")
METHOD_TITLES = dict(ed="error diffusion", dither="matrix dither", threshold="fixed threshold")
SIZE_NAMES = ("small", "medium", "large")


def read_csv(directory, name):
    with open(os.path.join(directory, name), newline="") as f:
        return list(csv.DictReader(f))


def figure_png(fig):
    buffer = io.BytesIO()
    fig.savefig(buffer, format="png", dpi=80, bbox_inches="tight")
    plt.close(fig)
    return base64.b64encode(buffer.getvalue()).decode("ascii")


def srgb_to_linear(v):
    c = np.asarray(v, dtype=float) / 255.0
    return np.where(c <= 0.04045, c / 12.92, ((c + 0.055) / 1.055) ** 2.4)


def linear_to_srgb(v):
    v = np.clip(v, 0.0, 1.0)
    return np.where(v <= 0.0031308, v * 12.92, 1.055 * v ** (1 / 2.4) - 0.055)


class Report:
    def __init__(self, directory):
        self.dir = directory
        self.config = {row["key"]: row["value"] for row in read_csv(directory, "config.csv")}
        self.methods = self.config["methods"].split()
        self.bits = int(self.config["bits"])
        self.dpi = (int(self.config["dpi_x"]), int(self.config["dpi_y"]))
        self.amounts = (0.0, float(self.config["small_ink"]), float(self.config["medium_ink"]), 1.0)
        self.tone = read_csv(directory, "tone.csv")
        self.spectrum = read_csv(directory, "spectrum.csv")
        self.flat = read_csv(directory, "flat.csv")
        self.texture = read_csv(directory, "texture.csv")
        self.ramps = list(OrderedDict.fromkeys(r["ramp"] for r in self.tone))
        self.inks = list(OrderedDict.fromkeys(r["ink"] for r in self.tone))

    def title(self, method):
        return METHOD_TITLES.get(method, method)

    # --- tone response -------------------------------------------------------
    def tone_figure(self):
        rows, cols = len(self.ramps), len(self.methods)
        fig, axes = plt.subplots(rows, cols, figsize=(3.6 * cols, 2.7 * rows), squeeze=False, sharex=True, sharey=True, layout="constrained")
        series = defaultdict(list)
        for r in self.tone:
            series[(r["method"], r["ramp"], r["ink"])].append((int(r["level"]), float(r["coverage"])))
        for i, ramp in enumerate(self.ramps):
            for j, method in enumerate(self.methods):
                ax = axes[i][j]
                for ink in self.inks:
                    points = sorted(series[(method, ramp, ink)])
                    if not points:
                        continue
                    levels, coverage = zip(*points)
                    ax.plot(levels, coverage, INK_DASH[ink], color=INK_LINE[ink], lw=1.6, label=ink)
                ax.set_xlim(255, 0)  # paper white on the left, full ink on the right
                ax.set_ylim(-0.02, 1.05)
                ax.grid(alpha=0.3)
                if i == 0:
                    ax.set_title(self.title(method))
                if j == 0:
                    ax.set_ylabel(f"{ramp} ramp\ncoverage")
                if i == rows - 1:
                    ax.set_xlabel("input level")
        axes[0][0].legend(fontsize=8, loc="upper left")
        fig.suptitle("Tone response: printed dot coverage per ink (dots counted by their ink amounts)")
        return figure_png(fig)

    def dot_size_figure(self):
        """Two-bit output: which dot sizes make up the flat ink's ramp."""
        ink = "black" if self.config["colour"] == "mono" else "cyan"
        ramp = "gray" if ink == "black" else "cyan"
        cols = len(self.methods)
        fig, axes = plt.subplots(1, cols, figsize=(3.6 * cols, 2.8), squeeze=False, sharey=True, layout="constrained")
        for j, method in enumerate(self.methods):
            rows = sorted(
                (int(r["level"]), [float(r[s]) for s in SIZE_NAMES])
                for r in self.tone
                if r["method"] == method and r["ramp"] == ramp and r["ink"] == ink
            )
            ax = axes[0][j]
            levels = [lv for lv, _ in rows]
            shares = np.array([s for _, s in rows])
            for k, (name, style) in enumerate(zip(SIZE_NAMES, (":", "--", "-"))):
                ax.plot(levels, shares[:, k], style, color=INK_LINE[ink], lw=1.6, label=name)
            ax.set_xlim(255, 0)
            ax.set_ylim(-0.02, 1.05)
            ax.grid(alpha=0.3)
            ax.set_title(self.title(method))
            ax.set_xlabel(f"input level ({ramp} ramp)")
        axes[0][0].set_ylabel(f"share of pixels ({ink})")
        axes[0][0].legend(fontsize=8)
        fig.suptitle("Dot sizes: share of pixels printed with small, medium and large dots")
        return figure_png(fig)

    # --- spectra ---------------------------------------------------------------
    def flat_rows(self, method):
        return [r for r in self.flat if r["method"] == method]

    def spectrum_series(self, method, level):
        rows = [r for r in self.spectrum if r["method"] == method and r["level"] == level]
        f = np.array([float(r["frequency"]) for r in rows])
        p = np.array([float(r["power"]) for r in rows])
        a = np.array([float(r["anisotropy"]) for r in rows])
        n = np.array([float(r["samples"]) for r in rows])
        return f, p, a, n

    def spectrum_figures(self):
        cols = len(self.methods)
        levels = list(OrderedDict.fromkeys(r["level"] for r in self.flat))
        colours = plt.cm.viridis(np.linspace(0.0, 0.85, max(1, len(levels))))
        windows = int(self.flat[0]["windows"]) if self.flat else 1
        fmax = min(self.dpi) / 25.4 / 2 * math.sqrt(2)
        power_fig, power_axes = plt.subplots(1, cols, figsize=(3.8 * cols, 3.0), squeeze=False, sharey=True, layout="constrained")
        aniso_fig, aniso_axes = plt.subplots(1, cols, figsize=(3.8 * cols, 3.0), squeeze=False, sharey=True, layout="constrained")
        for j, method in enumerate(self.methods):
            pax, aax = power_axes[0][j], aniso_axes[0][j]
            for colour, row in zip(colours, self.flat_rows(method)):
                f, p, a, n = self.spectrum_series(method, row["level"])
                variance = float(np.sum(p * n) / np.sum(n)) if len(n) else 0.0
                label = f"{float(row['coverage']) * 100:.0f} %"
                if variance <= 0.0:  # all on or all off: no pattern to measure
                    continue
                pax.plot(f, p / variance, color=colour, lw=1.2, label=label)
                pax.axvline(float(row["principal_frequency"]), color=colour, ls=":", lw=1)
                keep = a > 0
                aax.plot(f[keep], 10 * np.log10(a[keep]), color=colour, lw=1.2, label=label)
            pax.set_title(self.title(method))
            aax.set_title(self.title(method))
            for ax in (pax, aax):
                ax.set_xlim(0, fmax)
                ax.set_xlabel("frequency (cycles/mm)")
                ax.grid(alpha=0.3)
            aax.axhline(10 * math.log10(1 / windows), color="gray", ls="--", lw=1)
            if not pax.lines:
                pax.text(0.5, 0.5, "no pattern:\nevery patch all on or all off", ha="center", va="center",
                         transform=pax.transAxes)
                aax.text(0.5, 0.5, "no pattern", ha="center", va="center", transform=aax.transAxes)
            elif j == 0 or not power_axes[0][0].lines:
                pax.legend(fontsize=7, title="coverage", title_fontsize=7)
        power_axes[0][0].set_ylabel("power / variance")
        aniso_axes[0][0].set_ylabel("anisotropy (dB)")
        ink = self.config["spectrum_ink"]
        power_fig.suptitle(f"Radially averaged power spectrum of flat {ink} patches (dotted: principal frequency)")
        aniso_fig.suptitle(f"Anisotropy of flat {ink} patches (dashed: the level of {windows} averaged random patterns)")
        return figure_png(power_fig), figure_png(aniso_fig)

    # --- texture -----------------------------------------------------------------
    def crop_image(self, method, patch):
        rows = sorted(
            (int(r["row"]), r["codes"]) for r in self.texture if r["method"] == method and r["patch"] == patch
        )
        codes = np.array([[int(line[i : i + 2], 16) for i in range(0, len(line), 2)] for _, line in rows])
        light = np.ones(codes.shape + (3,))
        amounts = np.array(self.amounts)
        for k, rgb in enumerate(INK_RGB.values()):
            coverage = amounts[(codes >> (2 * k)) & 3]
            absorb = 1.0 - srgb_to_linear(rgb)
            light *= 1.0 - coverage[..., None] * absorb
        return linear_to_srgb(light)

    def texture_figure(self):
        patches = list(OrderedDict.fromkeys(r["patch"] for r in self.texture))
        levels = {r["patch"]: r["level"] for r in self.texture}
        cols = len(self.methods)
        fig, axes = plt.subplots(len(patches), cols, figsize=(3.3 * cols, 3.3 * len(patches)), squeeze=False, layout="constrained")
        mm_x, mm_y = 25.4 / self.dpi[0], 25.4 / self.dpi[1]
        for i, patch in enumerate(patches):
            for j, method in enumerate(self.methods):
                ax = axes[i][j]
                image = self.crop_image(method, patch)
                h, w = image.shape[:2]
                # Extent in millimetres keeps pixels that are not square in shape.
                ax.imshow(image, interpolation="nearest", extent=(0, w * mm_x, h * mm_y, 0))
                ax.set_xticks([])
                ax.set_yticks([])
                if i == 0:
                    ax.set_title(self.title(method))
                if j == 0:
                    ax.set_ylabel(f"{patch} gray\n(input {levels[patch]})")
        width_mm = self.crop_image(self.methods[0], patches[0]).shape[1] * mm_x if patches else 0
        fig.suptitle(f"Texture: gray patches, {width_mm:.1f} mm wide crops")
        return figure_png(fig)

    # --- page ----------------------------------------------------------------------
    def step_table(self):
        """The largest coverage change between neighbouring levels of each ramp:
        a gradient printed with the configuration shows it as a band."""
        series = defaultdict(list)
        for r in self.tone:
            series[(r["method"], r["ramp"], r["ink"])].append((int(r["level"]), float(r["coverage"])))
        head = "<tr><th>method</th><th>ramp</th><th>ink</th><th>largest step</th><th>between input levels</th></tr>"
        body = []
        for method in self.methods:
            for ramp in self.ramps:
                steps = []
                for ink in self.inks:
                    points = sorted(series[(method, ramp, ink)])
                    for (l0, c0), (l1, c1) in zip(points, points[1:]):
                        steps.append((abs(c1 - c0), ink, l0, l1))
                if not steps:
                    continue
                step, ink, l0, l1 = max(steps)
                body.append(
                    f"<tr><td>{html.escape(self.title(method))}</td><td>{ramp}</td><td>{ink}</td>"
                    f"<td>{step:.3f}</td><td>{l1} to {l0}</td></tr>"
                )
        return f"<table id=\"step-table\">{head}{''.join(body)}</table>"

    def flat_table(self):
        head = (
            "<tr><th>method</th><th>input level</th><th>coverage</th><th>pixels with a dot</th>"
            "<th>principal frequency (cycles/mm)</th><th>power below half of it</th><th>mean anisotropy (dB)</th></tr>"
        )
        body = []
        for r in self.flat:
            body.append(
                "<tr><td>{}</td><td>{}</td><td>{:.3f}</td><td>{:.3f}</td><td>{:.2f}</td><td>{:.4f}</td><td>{:.1f}</td></tr>".format(
                    html.escape(self.title(r["method"])), r["level"], float(r["coverage"]), float(r["dotted"]),
                    float(r["principal_frequency"]), float(r["low_power_share"]), float(r["anisotropy_db"]),
                )
            )
        return f"<table id=\"flat-table\">{head}{''.join(body)}</table>"

    def page(self):
        c = self.config
        figures = [("tone", "Tone response", self.tone_figure(), TONE_TEXT)]
        if self.bits == 2:
            figures.append(("dot-sizes", "Dot sizes", self.dot_size_figure(), DOT_SIZE_TEXT))
        power, aniso = self.spectrum_figures()
        figures.append(("spectrum", "Power spectrum", power, SPECTRUM_TEXT))
        figures.append(("anisotropy", "Anisotropy", aniso, ANISOTROPY_TEXT))
        figures.append(("texture", "Texture", self.texture_figure(), TEXTURE_TEXT))
        summary = (
            f"{c['bits']}-bit {c['colour']} printing at {c['resolution']} dpi, {html.escape(c['pack'])} pack, "
            f"gamma {c['gamma']}; methods: {', '.join(self.title(m) for m in self.methods)}"
        )
        sections = []
        for key, title, png, text in figures:
            sections.append(
                f'<section><h2>{title}</h2><p>{text}</p><figure id="{key}">'
                f'<img alt="{title}" src="data:image/png;base64,{png}"></figure></section>'
            )
        csv_links = " ".join(
            f'<a href="{name}">{name}</a>' for name in ("tone.csv", "spectrum.csv", "flat.csv", "texture.csv", "config.csv")
        )
        return PAGE.format(
            summary=summary,
            sections="\n".join(sections),
            table=self.flat_table(),
            steps=self.step_table(),
            csv_links=csv_links,
        )


TONE_TEXT = (
    "Gray and primary ramps (input level 255 is paper white) printed through colour management and "
    "halftoning; every curve is the share of the ink's pixels with a dot, small and medium dots counted by "
    "their ink relative to a large dot. The methods read the same colour table and tone curves, so their "
    "curves should lie on each other; a step in a curve is a band in a printed gradient."
)
DOT_SIZE_TEXT = "For two-bit output, how the dot-split table hands small dots over to medium and large ones."
SPECTRUM_TEXT = (
    "Power of the mean-free pattern of flat single-ink patches, averaged over annuli of equal frequency on "
    "paper and divided by the pattern's variance. A good blue-noise pattern has almost no power below its "
    "principal frequency (dotted lines): there the eye sees grain."
)
ANISOTROPY_TEXT = (
    "Spread of the power within each annulus over its mean squared. Random isotropic patterns stay near the "
    "dashed line; directional structure (worms, grid artefacts) lifts it. A matrix dither repeats its matrix "
    "in every window, so its averaged spectrum is a single periodogram: its floor is 0 dB."
)
TEXTURE_TEXT = (
    "Enlarged crops of light, middle and dark gray patches, each dot drawn in its ink colour with its ink "
    "amount, inks multiplied; no dot gain, so the single dots stay visible."
)

PAGE = """<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>inkdot print quality report</title>
<style>
body {{ font-family: sans-serif; margin: 1.5em auto; max-width: 1200px; color: #222; }}
h1 {{ margin-bottom: 0.2em; }} .summary {{ color: #555; margin-top: 0; }}
figure {{ margin: 0; }} img {{ max-width: 100%; }}
table {{ border-collapse: collapse; font-size: 0.9em; }}
td, th {{ border: 1px solid #ccc; padding: 0.2em 0.6em; text-align: right; }}
th {{ background: #f2f2f2; }}
</style></head>
<body>
<h1>inkdot print quality report</h1>
<p class="summary">{summary}</p>
{sections}
<section><h2>Tone steps</h2><p>The largest change of coverage between neighbouring levels of each
ramp, in any ink. Smooth curves change by a few hundredths; a fixed threshold jumps by design.</p>{steps}</section>
<section><h2>Flat patches in numbers</h2>{table}
<p>The measurements as CSV, beside this page: {csv_links}</p></section>
</body></html>
"""


def main(argv):
    if len(argv) != 2:
        print("usage: report_plots.py OUTDIR   (the directory `inkdot report -o OUTDIR` wrote)", file=sys.stderr)
        return 2
    directory = argv[1]
    try:
        page = Report(directory).page()
    except (OSError, KeyError, ValueError, IndexError) as e:
        print(f"report_plots.py: cannot make the report from {directory}: {e}", file=sys.stderr)
        return 1
    out = os.path.join(directory, "report.html")
    with open(out + ".tmp", "w") as f:
        f.write(page)
    os.replace(out + ".tmp", out)
    print(f"report: {out}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
