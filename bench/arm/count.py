#!/usr/bin/env python3
"""Counts the instructions of every ARM workload under qemu-arm.

Usage: count.py --plugin ui32-icount.so --inputs DIR --out counts.json BUILD...

BUILD is NAME=BUILD_DIR[:LIBRARY]: the ARM build directory holds
bench/ui32-armbench (the driver), bench/emulator.txt (the qemu-arm command
line with its CPU) and ui32.so; LIBRARY measures another ui32.so with that
build's driver and emulator (an older or newer library: the driver uses only
the public interface).

Each workload runs for one round and for three rounds, as ui32 and as libc's
memset and memcpy of the same rows; half the difference of the two counts is
one round without start-up and set-up.
"""

import argparse
import concurrent.futures
import datetime
import json
import os
import re
import shlex
import subprocess
import sys


def run(command):
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode != 0:
        raise RuntimeError(f"{shlex.join(command)}: exit {done.returncode}\n{done.stdout}{done.stderr}")
    icount = re.search(r"^icount: (\d+)$", done.stderr, re.M)
    pixels = re.search(r"^pixels (\d+)$", done.stdout, re.M)
    if not icount or not pixels:
        raise RuntimeError(f"{shlex.join(command)}: no count\n{done.stdout}{done.stderr}")
    return int(icount.group(1)), int(pixels.group(1))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--plugin", required=True)
    parser.add_argument("--inputs", required=True)
    parser.add_argument("--out", required=True)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--filter", default="", help="only the workloads whose name contains this")
    parser.add_argument("builds", nargs="+", metavar="NAME=BUILD_DIR[:LIBRARY]")
    args = parser.parse_args()

    builds = []
    for given in args.builds:
        name, _, rest = given.partition("=")
        build_dir, _, library = rest.partition(":")
        driver = os.path.join(build_dir, "bench", "ui32-armbench")
        with open(os.path.join(build_dir, "bench", "emulator.txt")) as f:
            emulator = shlex.split(f.read())
        library = os.path.abspath(library or os.path.join(build_dir, "ui32.so"))
        flags = ""
        cache = os.path.join(build_dir, "CMakeCache.txt")
        if os.path.exists(cache):
            with open(cache) as f:
                for line in f:
                    if line.startswith("CMAKE_CXX_FLAGS:"):
                        flags = line.split("=", 1)[1].strip()
        builds.append({"name": name, "driver": driver, "emulator": emulator, "library": library, "flags": flags})

    listing = subprocess.run(builds[0]["emulator"] + [builds[0]["driver"], "--list"], capture_output=True, text=True,
                             check=True).stdout
    workloads = [line.split("\t") for line in listing.splitlines() if line and args.filter in line]

    jobs = {}
    with concurrent.futures.ThreadPoolExecutor(max_workers=args.jobs) as pool:
        for b in builds:
            for name, _ in workloads:
                for mode in ("ui32", "memset", "memcpy"):
                    for rounds in (1, 3):
                        command = b["emulator"] + ["-plugin", args.plugin, b["driver"], b["library"], args.inputs,
                                                   name, str(rounds), mode]
                        jobs[(b["name"], name, mode, rounds)] = pool.submit(run, command)
        try:
            results = {key: job.result() for key, job in jobs.items()}
        except RuntimeError as e:
            for job in jobs.values():
                job.cancel()
            print(f"count: {e}", file=sys.stderr)
            return 1

    out = {
        "date": datetime.datetime.now(datetime.timezone.utc).isoformat(timespec="seconds"),
        "builds": [{"name": b["name"], "emulator": " ".join(b["emulator"]), "library": b["library"],
                    "flags": b["flags"]} for b in builds],
        "workloads": [],
    }
    for name, yardstick in workloads:
        entry = {"name": name, "yardstick": yardstick, "pixels": None, "instructions": {}}
        for b in builds:
            per_round = {}
            for mode in ("ui32", "memset", "memcpy"):
                (one, pixels), (three, pixels3) = results[(b["name"], name, mode, 1)], results[(b["name"], name, mode, 3)]
                if pixels != pixels3 or three < one:
                    print(f"count: {name} ({b['name']}, {mode}): inconsistent runs", file=sys.stderr)
                    return 1
                per_round[mode] = (three - one) / 2
                entry["pixels"] = pixels
            entry["instructions"][b["name"]] = per_round
        out["workloads"].append(entry)
        line = "  ".join(f"{b['name']} {entry['instructions'][b['name']]['ui32'] / entry['pixels']:6.2f}"
                         for b in builds)
        print(f"count: {name:70s} instr/px  {line}")
    with open(args.out, "w") as f:
        json.dump(out, f, indent=1)
    print(f"count: wrote {args.out}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
