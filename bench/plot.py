#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws docs/performance.svg: cost against size.

    bench/plot.py PICTURES.json COMPETITORS.json TARGET.svg

PICTURES.json is what picture_competitors_bench --benchmark_out=PICTURES.json writes, COMPETITORS.json what
competitors.py writes.
"""

import json
import statistics
import sys

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot as plt

DECODERS = {"Vdec": ("vdec_decode", "o"), "Jpeg": ("libjpeg-turbo 4:4:4, same bytes", "s"),
            "Jpeg75": ("libjpeg-turbo 4:4:4, quality 75", "^"), "Jpeg2000": ("OpenJPEG 9/7, same bytes", "D")}


def draw_pictures(axes, benchmarks):
    medians = [b for b in benchmarks if b.get("aggregate_name") == "median"]
    unit = next(b["cpu_time"] for b in medians if b["run_name"] == "Vdec/sample")
    sizes = {b["run_name"].split("/")[1]: b["bytes"] for b in medians if b["run_name"].startswith("Vdec/")}
    for decoder, (label, marker) in DECODERS.items():
        points = sorted((sizes[name.split("/")[1]] / 1024, time / unit)
                        for name, time in ((b["run_name"], b["cpu_time"]) for b in medians)
                        if name.split("/")[0] == decoder)
        axes.plot(*zip(*points), marker=marker, label=label)
    axes.set_yscale("log", base=2)
    axes.yaxis.set_major_formatter("{x:g}")
    axes.set(xlabel="payload of the same picture, KiB", ylabel="time of a picture (vdec_decode of the sample = 1)",
             title="Decoding a picture")
    axes.legend(fontsize="small")


def draw_lengths(axes, figures):
    memory = axes.twinx()
    for kind, color in (("video", "tab:blue"), ("voice", "tab:orange")):
        rows = sorted((int(key.split()[-1]), row) for key, row in figures.items()
                      if key.startswith(f"length {kind}"))
        minutes = [length for length, _ in rows]
        cost = [statistics.median(cost for cost, _ in row) for _, row in rows]
        resident = [max(size for _, size in row) for _, row in rows]
        axes.plot(minutes, [each / cost[0] for each in cost], marker="o", color=color,
                  label=f"{kind}: processor time a minute")
        memory.plot(minutes, resident, marker="s", linestyle="--", color=color,
                    label=f"{kind}: resident memory (right)")
    axes.set_xscale("log")
    axes.set_ylim(0, 2)
    memory.set_ylim(0, 80)
    memory.set_ylabel("MiB")
    axes.set(xlabel="length of the message, minutes", ylabel="processor time a minute (1 minute long = 1)",
             title="Playing a message")
    lines = [line for each in (axes, memory) for line in each.get_lines()]
    axes.legend(lines, [line.get_label() for line in lines], fontsize="small")


def main():
    pictures, competitors, target = sys.argv[1:]
    figure, (left, right) = plt.subplots(1, 2, figsize=(11, 4.2))
    with open(pictures, encoding="utf-8") as file:
        draw_pictures(left, json.load(file)["benchmarks"])
    with open(competitors, encoding="utf-8") as file:
        draw_lengths(right, json.load(file))
    figure.tight_layout()
    matplotlib.rcParams["svg.hashsalt"] = "performance"
    figure.savefig(target, metadata={"Date": None})


if __name__ == "__main__":
    main()
