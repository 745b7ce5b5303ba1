#!/usr/bin/env python3
"""Instructions per unit of work, counted by callgrind, for the jobs of bench/cost/cost_jobs.cpp.

    cost.py BUILD_DIR [--write docs/performance.md] [--jobs NAME,NAME]

For each job it runs the plug-in's side, and the host's own equivalent where there is one, under
callgrind, collecting only the measured calculation. It prints, per unit of work, what
Ravelin.fmx itself executed, the whole measured calculation (host, libraries and plug-in), the
host's own equivalent, and the ratio of the two, next to the goals. With --write, the table goes
into the file between its "cost-table" markers, with the date and commit.
"""
import argparse
import datetime
import os
import statistics
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from callgrind_objects import own_cost_by_object  # noqa: E402

PLUGIN_OBJECT = "Ravelin.fmx"
# job: (own per unit, whole per unit or None, whole / host or None)
GOALS = {
    "ExecuteSQL": (60, None, 1.15),
    "store pair": (400, None, 4.0),
    "Encode": (6, 15, None),
    "Decode": (5, 12, None),
    "GetAsHTML": (60, 200, None),
    "MergeText": (250, 1500, None),
}
FAULT_GOALS = {"Encode": 6000}
BEGIN, END = "<!-- cost-table -->", "<!-- /cost-table -->"


def list_jobs(runner):
    out = subprocess.run([runner, "--list"], check=True, capture_output=True, text=True).stdout
    jobs = []
    for line in out.splitlines():
        name, unit, units, host, empty, same = line.split("\t")
        jobs.append({"name": name, "unit": unit, "units": int(units), "host": host == "host",
                     "empty": empty == "empty", "same": same == "same"})
    return jobs


def measure(runner, job, side, scratch):
    """(own instructions of Ravelin.fmx, all instructions, printed result) of one side."""
    out_file = os.path.join(scratch, f"{job}-{side}.out".replace(" ", "_"))
    done = subprocess.run(
        ["valgrind", "--tool=callgrind", "--toggle-collect=ravelin_cost_measured",
         f"--callgrind-out-file={out_file}", runner, job, side],
        capture_output=True, text=True)
    if done.returncode != 0:
        raise RuntimeError(f"{job} {side} failed:\n{done.stderr[-2000:]}")
    totals = own_cost_by_object(out_file)
    own = sum(v for k, v in totals.items() if k.endswith(PLUGIN_OBJECT))
    return own, sum(totals.values()), done.stdout.strip()


def warm_faults(runner, job, runs=3):
    counts = []
    for _ in range(runs):
        out = subprocess.run([runner, "--faults", job], check=True, capture_output=True, text=True)
        counts.append(int(out.stdout.strip()))
    return int(statistics.median(counts))


def cost_of(runner, job, scratch):
    name, units = job["name"], job["units"]
    own, whole, result = measure(runner, name, "plugin", scratch)
    row = {"job": name, "unit": job["unit"], "units": units, "own": own / units}
    base = 0
    if job["empty"]:
        base = measure(runner, name, "empty", scratch)[1]
    row["whole"] = (whole - base) / units
    if job["host"]:
        _, host, host_result = measure(runner, name, "host", scratch)
        row["host"] = (host - base) / units
        row["ratio"] = row["whole"] / row["host"]
        if job["same"] and host_result != result:
            row["note"] = f"results differ: {result} / {host_result}"
    if name in FAULT_GOALS:
        row["faults"] = warm_faults(runner, name)
    return row


def verdict(value, goal):
    return "" if goal is None else ("met" if value <= goal else "NOT met")


def fmt(x, digits=1):
    return f"{x:,.{digits}f}"


def table(rows):
    lines = [
        "| job | per | Ravelin.fmx own | goal | whole | host's own | whole / host | goal |",
        "|---|---|---:|---|---:|---:|---:|---|",
    ]
    for r in rows:
        own_goal, whole_goal, ratio_goal = GOALS.get(r["job"], (None, None, None))
        whole_cell = fmt(r["whole"])
        goal_cell = ""
        if whole_goal is not None:
            goal_cell = f"whole <= {whole_goal}: {verdict(r['whole'], whole_goal)}"
        host = fmt(r["host"]) if "host" in r else "-"
        ratio = f"{r['ratio']:.2f}x" if "ratio" in r else "-"
        if ratio_goal is not None and "ratio" in r:
            goal_cell = f"<= {ratio_goal}x: {verdict(r['ratio'], ratio_goal)}"
        if "faults" in r:
            fault_goal = FAULT_GOALS[r["job"]]
            goal_cell += (f"; warm call on 10 MB of text: {r['faults']:,} page faults "
                          f"(<= {fault_goal:,}: {verdict(r['faults'], fault_goal)})")
        if "note" in r:
            goal_cell += f"; {r['note']}"
        own_cell = f"<= {own_goal}: {verdict(r['own'], own_goal)}" if own_goal else ""
        lines.append(f"| {r['job']} | {r['unit']} | {fmt(r['own'])} | {own_cell} | {whole_cell} "
                     f"| {host} | {ratio} | {goal_cell} |")
    return "\n".join(lines)


def commit_of(source):
    done = subprocess.run(["git", "-C", source, "rev-parse", "--short", "HEAD"],
                          capture_output=True, text=True)
    dirty = subprocess.run(["git", "-C", source, "status", "--porcelain", "--untracked-files=no"],
                           capture_output=True, text=True).stdout.strip()
    return (done.stdout.strip() or "unknown") + (" with local changes" if dirty else "")


def write_into(path, text):
    with open(path, encoding="utf-8") as f:
        doc = f.read()
    start, end = doc.index(BEGIN) + len(BEGIN), doc.index(END)
    with open(path, "w", encoding="utf-8") as f:
        f.write(doc[:start] + "\n" + text + "\n" + doc[end:])


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--write")
    parser.add_argument("--jobs", help="comma-separated job names (default: all)")
    args = parser.parse_args()
    runner = os.path.join(args.build, "ravelin_cost")
    jobs = list_jobs(runner)
    if args.jobs:
        wanted = set(args.jobs.split(","))
        jobs = [j for j in jobs if j["name"] in wanted]
    with tempfile.TemporaryDirectory(prefix="ravelin-cost-") as scratch:
        rows = []
        for job in jobs:
            print(f"measuring {job['name']} ...", file=sys.stderr, flush=True)
            rows.append(cost_of(runner, job, scratch))
    source = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    stamp = f"Measured {datetime.date.today().isoformat()} at commit {commit_of(source)}."
    text = table(rows) + "\n\n" + stamp
    print(text)
    if args.write:
        write_into(args.write, text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
