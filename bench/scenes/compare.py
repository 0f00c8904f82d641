"""Runs the scenes in Halcyr and, in turns, in the other engines, and writes what came out."""
import argparse
import csv
import math
import os
import statistics
import subprocess
import sys
import time

sys.dont_write_bytecode = True
from plan import CAP, CAPS, GOALS, GROWTH, PLAN, SHOWN  # noqa: E402
import plot  # noqa: E402

OURS = "halcyr"


class Runner:
    def __init__(self, options):
        self.options = options
        self.started = time.monotonic()
        self.cache = os.path.join(options.out, "references")
        os.makedirs(self.cache, exist_ok=True)

    def has(self, program):
        return os.access(self.path(program), os.X_OK)

    def path(self, program):
        return os.path.join(self.options.programs, "bench_scenes_" + program)

    def cap(self, scene):
        return self.options.cap or CAPS.get(scene, CAP)

    def progress(self, text):
        seconds = int(time.monotonic() - self.started)
        line = f"{seconds // 60:3d}:{seconds % 60:02d}  {text}"
        if sys.stderr.isatty():
            sys.stderr.write("\r\033[K" + line)
        else:
            sys.stderr.write(line + "\n")
        sys.stderr.flush()

    def run(self, program, scene, variant, *more, cap=None):
        """The numbers of one run, and "why"; of one that ended badly its reason alone."""
        cap = cap or self.cap(scene)
        command = [self.path(program), scene, "--variant", variant, "--cap", str(cap),
                   "--cache", self.cache, *more]
        try:
            done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                  timeout=3 * cap + 60, preexec_fn=lambda: pin(variant), check=False)
        except subprocess.TimeoutExpired:
            return {"why": "no end"}
        if done.returncode != 0:
            return {"why": f"crashed ({done.returncode})"}
        result = {}
        for line in done.stdout.splitlines():
            name, _, value = line.partition(" ")
            try:
                result[name] = float(value)
            except ValueError:
                result[name] = value
        return result


def pin(variant):
    """One core for what runs on one thread."""
    cores = sorted(os.sched_getaffinity(0))
    if not any(part[:1] == "t" and part[1:].isdigit() for part in variant.split("/")):
        os.sched_setaffinity(0, {cores[-1]})


class Row:
    """A variant of an engine in a scene, over the repetitions."""

    def __init__(self, scene, program, variant):
        self.scene, self.program, self.variant = scene, program, variant
        self.name = f"{program} {variant}"
        self.runs = []

    def add(self, result):
        self.runs.append(result)

    @property
    def times(self):
        return [run["median_ms"] for run in self.runs if "median_ms" in run]

    @property
    def ms(self):
        return statistics.median(self.times) if self.times else math.nan

    @property
    def spread(self):
        return max(self.times) / min(self.times) if self.times else math.nan

    @property
    def last(self):
        return self.runs[-1]

    @property
    def acceptable(self):
        return all(run.get("acceptable") == 1 for run in self.runs)

    def holds(self, bounds):
        return self.last.get("why") != "cut" and all(
            self.last.get(name, math.inf) < bound for name, bound in bounds.items())

    @property
    def quality(self):
        shown = [f"{name}={self.last[name]:.2g}" for name in SHOWN
                 if name in self.last and (self.last[name] != 0 or name in ("lost", "missed", "wrong"))]
        return " ".join(shown)


def compare(runner, scene):
    """All rows of a scene; engines take turns."""
    ours, others = PLAN[scene]
    variants = [(OURS, v) for v in ours] + [(p, v) for p, v in others if runner.has(p)]
    rows = [Row(scene, program, variant) for program, variant in variants]
    long = set()
    for repetition in range(runner.options.repetitions):
        for row in rows:
            if row in long:
                continue
            runner.progress(f"{scene:10s} {repetition + 1}/{runner.options.repetitions}  {row.name}")
            start = time.monotonic()
            row.add(runner.run(row.program, scene, row.variant))
            if time.monotonic() - start > runner.options.long or "median_ms" not in row.last:
                long.add(row)
    return rows


def best(rows):
    held = [row for row in rows if row.acceptable]
    return min(held, key=lambda row: row.ms) if held else None


def summary(scene, rows):
    """Ours against the best of the others at acceptable quality, and against the goal."""
    ours = best([row for row in rows if row.program == OURS])
    other = best([row for row in rows if row.program != OURS])
    line = {"scene": scene, "ours": ours, "other": other, "ratio": math.nan, "goal": "", "met": ""}
    if ours and other:
        line["ratio"] = ours.ms / other.ms
    if scene in GOALS:
        factor, name, bounds = GOALS[scene]
        line["goal"] = f"{factor} x {name}, " + ", ".join(f"{k}<{v:g}" for k, v in bounds.items())
        mark = next((row for row in rows if row.name == name and row.times), None)
        fit = [row for row in rows if row.program == OURS and row.acceptable and row.holds(bounds)]
        if mark and fit:
            reached = min(row.ms for row in fit) / mark.ms
            line["met"] = f"{'yes' if reached <= factor else 'no'} ({reached:.2f})"
        else:
            line["met"] = "no (quality)" if mark else ""
    return line


def ms(value):
    return "-" if math.isnan(value) else f"{value:.4g}"


def summary_table(lines):
    text = [f"{'scene':10s} {'ours':22s} {'ms':>9s} {'best other':26s} {'ms':>9s} {'ratio':>7s}  "
            f"{'goal':58s} met"]
    for line in lines:
        ours, other = line["ours"], line["other"]
        text.append(
            f"{line['scene']:10s} {ours.variant if ours else 'none holds':22s} "
            f"{ms(ours.ms if ours else math.nan):>9s} {other.name if other else 'none holds':26s} "
            f"{ms(other.ms if other else math.nan):>9s} {ms(line['ratio']):>7s}  "
            f"{line['goal']:58s} {line['met']}")
    return "\n".join(text)


def detail_table(rows):
    text = [f"{'scene':10s} {'variant':26s} {'ms':>9s} {'p95':>9s} {'spread':>7s} {'runs':>4s}  "
            f"acceptable"]
    for row in rows:
        verdict = "yes" if row.acceptable else "no: " + str(row.last.get("why", "?"))
        text.append(f"{row.scene:10s} {row.name:26s} {ms(row.ms):>9s} "
                    f"{ms(row.last.get('p95_ms', math.nan)):>9s} {ms(row.spread):>7s} "
                    f"{len(row.runs):4d}  {verdict}\n{'':12s}{row.quality}")
    return "\n".join(text)


def write_csv(path, rows):
    names = sorted({name for row in rows for run in row.runs for name in run})
    with open(path, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file)
        writer.writerow(["scene", "program", "variant", "repetition", *names])
        for row in rows:
            for i, run in enumerate(row.runs):
                writer.writerow([row.scene, row.program, row.variant, i + 1,
                                 *(run.get(name, "") for name in names)])


def profile(runner, row):
    """Where the time of the best variant goes, and its trace for a browser."""
    trace = os.path.join(runner.options.out, f"trace_{row.scene}.json")
    runner.progress(f"{row.scene:10s} profile  {row.name}")
    result = runner.run(row.program, row.scene, row.variant, "--trace", trace,
                        cap=runner.cap(row.scene) / 4)
    def listed(prefix, unit):
        values = [(name[len(prefix):], value) for name, value in result.items()
                  if name.startswith(prefix) and isinstance(value, float)]
        values.sort(key=lambda item: -item[1])
        return ", ".join(f"{name.replace('_', ' ')} {value:.4g}{unit}" for name, value in values)
    return (f"{row.scene} ({row.variant}), mean {ms(result.get('mean_ms', math.nan))} ms\n"
            f"  stages:   {listed('ms_', ' ms')}\n  zones:    {listed('zone_', ' ms')}\n"
            f"  counters: {listed('n_', '')}\n")


def exponent(points):
    """Slope of the least squares line through the logarithms."""
    x = [math.log(size) for size, _ in points]
    y = [math.log(value) for _, value in points]
    mx, my = statistics.fmean(x), statistics.fmean(y)
    return (sum((a - mx) * (b - my) for a, b in zip(x, y)) / sum((a - mx) ** 2 for a in x))


def growth(runner):
    text = []
    for family, (scenes, steps, variant, other) in GROWTH.items():
        engines = [(OURS, variant)] + ([other] if other and runner.has(other[0]) else [])
        points = {engine: [] for engine in engines}
        for scene in scenes:
            for program, mode in engines:
                runner.progress(f"{scene:10s} growth  {program} {mode}")
                result = runner.run(program, scene, mode, "--steps", str(steps),
                                    cap=runner.cap(scene) / 2)
                if result.get("late_median_ms", 0) > 0 and result.get("failed") == 0:
                    size = int("".join(c for c in scene if c.isdigit()))
                    points[program, mode].append((size, result["late_median_ms"]))
        for (program, mode), found in points.items():
            if len(found) > 1:
                values = "  ".join(f"{size}: {value:.4g} ms" for size, value in found)
                text.append(f"{family:13s} {program + ' ' + mode:18s} "
                            f"n^{exponent(found):.2f}   {values}")
    return "\n".join(text)


def parse():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("scenes", nargs="*", default=[], help="default: all; " + " ".join(PLAN))
    parser.add_argument("--repetitions", type=int, default=3)
    parser.add_argument("--cap", type=float,
                        help=f"wall time of a run, s; default {CAP}, more for a few scenes")
    parser.add_argument("--long", type=float, default=4,
                        help="a variant that runs longer is not repeated, s")
    parser.add_argument("--out", default="build/bench", help="folder of the results")
    parser.add_argument("--no-profile", action="store_true")
    parser.add_argument("--no-growth", action="store_true")
    parser.add_argument("--growth-only", action="store_true")
    parser.add_argument("--programs", required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    unknown = [scene for scene in options.scenes if scene not in PLAN]
    if unknown:
        parser.error("no such scene: " + " ".join(unknown))
    if options.growth_only:
        options.scenes = []
    elif not options.scenes:
        options.scenes = list(PLAN)
    else:
        options.no_growth = True
    return options


def main():
    options = parse()
    runner = Runner(options)
    rows, lines, profiles = [], [], []
    for scene in options.scenes:
        found = compare(runner, scene)
        rows += found
        lines.append(summary(scene, found))
        ours = [row for row in found if row.program == OURS and row.times]
        if ours and not options.no_profile and scene not in ("broad", "rays"):
            profiles.append(profile(runner, best(ours) or ours[-1]))
    parts = []
    if lines:
        parts += [summary_table(lines), detail_table(rows)]
        write_csv(os.path.join(options.out, "results.csv"), rows)
        plot.write(os.path.join(options.out, "ratios.svg"), lines)
    if profiles:
        parts.append("\n".join(profiles))
    if not options.no_growth:
        parts.append(growth(runner))
    if sys.stderr.isatty():
        sys.stderr.write("\r\033[K")
    text = "\n\n".join(parts) + "\n"
    with open(os.path.join(options.out, "table.txt"), "w", encoding="utf-8") as file:
        file.write(text)
    print(text)
    print(f"in {options.out}: table.txt, results.csv, ratios.svg, and a trace a scene for a browser")


if __name__ == "__main__":
    main()
