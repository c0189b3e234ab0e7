#!/usr/bin/env python3
"""Mutation testing of the library against the test suite.

Generates single-line, single-operator faults (mutants) in ui/ from a seed,
and for each one: applies it, rebuilds incrementally, runs the CTest suite,
restores the file.  A mutant that does not compile is not viable; a failing,
crashing or timed-out test kills it.  Results go to a JSON-lines state file
(for --resume / --only) and a Markdown report (summary and full table).

  python3 tools/mutate.py --seed 1 --count 70 --list-only
  python3 tools/mutate.py --seed 1 --count 70 --report docs/mutants.md
  python3 tools/mutate.py --seed 1 --count 70 --resume     # after a stop
  python3 tools/mutate.py --seed 1 --count 70 --only M007,M031
"""
import argparse, glob, json, os, random, re, signal, subprocess, sys, time

KINDS = ("relational", "arithmetic", "constant", "logical", "bitwise")
REL = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
INT = r"(?:0[xX][0-9a-fA-F']+|\d[\d']*)[uUlL]*"
# (kind, pattern on the masked line, replacement of the matched text).  Binary
# operators are recognised by the blanks around them (the code is formatted so):
# template brackets, '->', '&x' and 'T &&x' never have a blank on both sides.
RULES = [
    ("relational", r"(?<=\s)(<=|>=|==|!=|<|>)(?=\s)", lambda m: REL[m.group(0)]),
    ("arithmetic", r"(?<=\s)\+ 1(?![\w.'])", lambda m: "+ 2"),
    ("arithmetic", r"(?<=\s)- 1(?![\w.'])", lambda m: "+ 0"),
    ("arithmetic", r"(?<=\s)([+-])(?=\s)", lambda m: "-" if m.group(0) == "+" else "+"),
    ("arithmetic", r"(?<=\s)([+-])=(?=\s)", lambda m: ("-=" if m.group(1) == "+" else "+=")),
    ("logical", r"(?<=\s)(&&|\|\|)(?=\s)", lambda m: "||" if m.group(0) == "&&" else "&&"),
    ("logical", r"!(?!=)", lambda m: ""),
    ("bitwise", r"(?<=\s)(&|\|)(=?)(?=\s)", lambda m: ("|" if m.group(1) == "&" else "&") + m.group(2)),
    ("bitwise", r"(?<=\s)\^(?=\s)", lambda m: "|"),
    ("bitwise", r"(?<=\s)(<<|>>)(=?)(?=\s)", lambda m: (">>" if m.group(1) == "<<" else "<<") + m.group(2)),
    ("bitwise", r"(?<=(?:<<|>>) )" + INT + r"(?![\w.])", lambda m: bump(m.group(0), 1)),
    ("constant", r"(?<![\w.'])" + INT + r"(?![\w.'>])", lambda m: bump(m.group(0), None)),
]
SKIP_START = re.compile(r"^(#|static_assert|extern\b|using\b|typedef\b|template\b|namespace\b|friend\b|struct\s+\w+;|class\s+\w+;)")
# Declarations without an initialiser (fields, locals, prototypes): nothing to mutate but array bounds.
PURE_DECL = re.compile(r"^(?!return\b|else\b|case\b|goto\b|delete\b)[\w:<>, *&]+\s+[*&]?[\w:~]+(\[[^\]=]*\])*"
                       r"(\([^=]*\)\s*(const)?\s*(noexcept)?)?\s*;$")


def bump(text, add):
    """Integer literal + 1 (or 1 -> 0 for a plain constant), keeping base and suffix."""
    m = re.match(r"(0[xX][0-9a-fA-F']+|\d[\d']*)([uUlL]*)$", text)
    digits, suffix = m.group(1).replace("'", ""), m.group(2)
    hexa = digits[:2].lower() == "0x"
    value = int(digits, 16 if hexa else 8 if len(digits) > 1 and digits[0] == "0" else 10)
    value = 0 if add is None and value == 1 else value + 1
    return (digits[:2] + "%0*X" % (len(digits) - 2, value) if hexa else oct(value).replace("0o", "0") if digits[0] == "0" and len(digits) > 1
            else str(value)) + suffix


def code_lines(text):
    """Yields (line number, line, masked code): comments removed, string and
    character literals blanked, so that only code is matched."""
    in_block = False
    for number, line in enumerate(text.split("\n"), 1):
        out, i = [], 0
        while i < len(line):
            if in_block:
                end = line.find("*/", i)
                if end < 0: i = len(line); continue
                out.append(" " * (end + 2 - i)); i = end + 2; in_block = False
            elif line.startswith("/*", i): in_block = True
            elif line.startswith("//", i): break
            elif line[i] in "\"'" and not (line[i] == "'" and i and line[i - 1].isalnum()):
                q, j = line[i], i + 1
                while j < len(line) and line[j] != q: j += 2 if line[j] == "\\" else 1
                out.append(q + " " * (j - i - 1) + q); i = j + 1
            else: out.append(line[i]); i += 1
        yield number, line, "".join(out).rstrip()


def sites(masked):
    """Every (kind, start, end, replacement) on one masked line, one per distinct mutated text."""
    code = masked.strip()
    if not code or SKIP_START.match(code) or PURE_DECL.match(code) or code in ("{", "}", "};"): return []
    found, seen = [], set()
    for kind, pattern, repl in RULES:
        for m in re.finditer(pattern, masked):
            key = (m.start(), m.end(), repl(m))
            if key[:2] not in seen and key[2] != m.group(0):
                seen.add(key[:2]); found.append((kind,) + key)
    return found


def generate(root, patterns, seed, count, max_per_file, header_weight):
    files = sorted({os.path.relpath(p, root) for pat in patterns for p in glob.glob(os.path.join(root, pat), recursive=True)})
    cands = {}
    for f in files:
        with open(os.path.join(root, f), encoding="utf-8") as fh:
            lines = [(n, line, s) for n, line, masked in code_lines(fh.read()) if (s := sites(masked))]
        if lines: cands[f] = lines
    weight = {f: len(c) * (header_weight if f.endswith(".h") else 1.0) for f, c in cands.items()}
    quota = dict.fromkeys(cands, 0)
    # One for every source file first (largest first; a header mutant rebuilds everything that includes
    # it, so headers only take their weighted share), then the largest-average (D'Hondt) rule, capped.
    for f in sorted((f for f in cands if not f.endswith(".h")), key=lambda f: (-weight[f], f))[:count]: quota[f] = 1
    while sum(quota.values()) < count:
        open_files = [f for f in cands if quota[f] < min(max_per_file, len(cands[f]))]
        if not open_files: break
        best = max(open_files, key=lambda f: (weight[f] / (quota[f] + 1), f))
        quota[best] += 1
    # On a line with several kinds, the rarer kinds (over the whole tree) are the likelier pick.
    lines_with = {k: sum(k in {s[0] for s in found} for c in cands.values() for _, _, found in c) for k in KINDS}
    mutants = []
    for f in sorted(cands):
        rng = random.Random("%s:%s" % (seed, f))
        order = list(cands[f]); rng.shuffle(order)  # prefix-stable: a larger count keeps these lines
        for n, line, found in sorted(order[:quota[f]]):
            kinds = sorted({s[0] for s in found}, key=KINDS.index)
            kind = rng.choices(kinds, [1.0 / lines_with[k] for k in kinds])[0]
            _, a, b, new = rng.choice([s for s in found if s[0] == kind])
            mutants.append(dict(file=f, line=n, kind=kind, original=line, mutated=line[:a] + new + line[b:]))
    for i, m in enumerate(mutants, 1): m["id"] = "M%03d" % i
    return mutants


def run(cmd, log, timeout, cwd):
    """Runs cmd into log; returns (exit code or None on timeout, seconds).  Kills the whole group on timeout."""
    start = time.monotonic()
    with open(log, "w") as out:
        proc = subprocess.Popen(cmd, cwd=cwd, stdout=out, stderr=subprocess.STDOUT, start_new_session=True)
        try: rc = proc.wait(timeout=timeout)
        except BaseException:
            os.killpg(proc.pid, signal.SIGKILL); proc.wait()
            if not isinstance(sys.exc_info()[1], subprocess.TimeoutExpired): raise
            rc = None
    return rc, round(time.monotonic() - start, 1)


def run_suite(args, log):
    """Builds and tests the tree as it is: (build ok, failing tests [(number, name, reason)], seconds)."""
    rc, build_s = run(["cmake", "--build", args.build_dir, "-j2"], log + ".build", args.build_timeout, args.root)
    if rc != 0: return False, [], build_s, 0
    rc, test_s = run(["ctest", "--test-dir", args.build_dir, "-j2", "--timeout", str(args.test_timeout)],
                     log + ".ctest", args.suite_timeout, args.root)
    with open(log + ".ctest", errors="replace") as fh: out = fh.read()
    failed = sorted({(int(n), name, why) for n, name, why in re.findall(r"^\s+(\d+) - (\S+) \((.+)\)$", out, re.M)})
    if rc is None: failed.append((10**9, "(whole suite)", "Timeout"))
    elif rc != 0 and not failed: failed.append((10**9, "(ctest)", "exit %d" % rc))
    return True, failed, build_s, test_s


def git_clean(root, path):
    return subprocess.run(["git", "diff", "--quiet", "--", path], cwd=root).returncode == 0


def try_mutant(args, m, logdir):
    path = os.path.join(args.root, m["file"])
    with open(path, "rb") as fh: original = fh.read()
    lines = original.decode("utf-8").split("\n")
    if lines[m["line"] - 1] != m["original"]: sys.exit("%s: %s:%d no longer reads as listed" % (m["id"], m["file"], m["line"]))
    lines[m["line"] - 1] = m["mutated"]
    try:
        with open(path, "wb") as fh: fh.write("\n".join(lines).encode("utf-8"))
        viable, failed, build_s, test_s = run_suite(args, os.path.join(logdir, m["id"]))
    finally:
        with open(path, "wb") as fh: fh.write(original)
        if not git_clean(args.root, m["file"]): sys.exit("%s was not restored: check it by hand" % m["file"])
    result = "not viable" if not viable else "killed" if failed else "survived"
    return dict(m, result=result, failed=["%s (%s)" % (name, why) for _, name, why in failed],
                build_s=build_s, test_s=test_s)


def cell(text):
    return "`" + text.strip().replace("|", "\\|").replace("`", "'") + "`"


def report(mutants, done, path, command):
    rows = [done[m["id"]] for m in mutants if m["id"] in done]
    out = ["Command: `%s`" % command, "", "| kind | mutants | viable | killed | survived | score |", "|---|---|---|---|---|---|"]
    for kind in KINDS + ("all",):
        rs = [r for r in rows if kind in ("all", r["kind"])]
        viable = [r for r in rs if r["result"] != "not viable"]
        killed = sum(r["result"] == "killed" for r in viable)
        score = "%.1f%%" % (100.0 * killed / len(viable)) if viable else "-"
        out.append("| %s | %d | %d | %d | %d | %s |" % (kind, len(rs), len(viable), killed, len(viable) - killed, score))
    out += ["", "| id | file:line | kind | original | mutated | result | failing tests (first) |", "|---|---|---|---|---|---|---|"]
    for r in rows:
        first = "%d: %s" % (len(r["failed"]), r["failed"][0]) if r["failed"] else ""
        out.append("| %s | %s:%d | %s | %s | %s | %s | %s |" % (r["id"], r["file"], r["line"], r["kind"], cell(r["original"]),
                                                             cell(r["mutated"]), r["result"], first))
    with open(path, "w") as fh: fh.write("\n".join(out) + "\n")
    print("\n".join(out[:10]))


def interrupted(*_):
    raise KeyboardInterrupt


def main():
    p = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    p.add_argument("--seed", default="1"); p.add_argument("--count", type=int, default=70)
    p.add_argument("--files", default="ui/**/*.cpp,ui/**/*.h", help="comma-separated globs, relative to --root")
    p.add_argument("--root", default="."); p.add_argument("--build-dir", default="build/native")
    p.add_argument("--max-per-file", type=int, default=6); p.add_argument("--header-weight", type=float, default=1.0)
    p.add_argument("--list-only", action="store_true", help="print the mutants, run nothing")
    p.add_argument("--only", help="comma-separated ids to (re-)run")
    p.add_argument("--resume", action="store_true", help="skip mutants already in the state file")
    p.add_argument("--state", help="JSON-lines results (default BUILD_DIR/mutation/state.jsonl)")
    p.add_argument("--report", help="Markdown report (default BUILD_DIR/mutation/report.md)")
    p.add_argument("--test-timeout", type=int, default=60); p.add_argument("--suite-timeout", type=int, default=600)
    p.add_argument("--build-timeout", type=int, default=900)
    p.add_argument("--skip-baseline", action="store_true", help="do not first check that the unmutated tree passes")
    args = p.parse_args()
    args.root = os.path.abspath(args.root)
    mutants = generate(args.root, args.files.split(","), args.seed, args.count, args.max_per_file, args.header_weight)
    if args.list_only:
        for m in mutants: print("%s\t%s:%d\t%s\t%s\t->\t%s" % (m["id"], m["file"], m["line"], m["kind"], m["original"].strip(), m["mutated"].strip()))
        return
    logdir = os.path.join(args.root, args.build_dir, "mutation")
    os.makedirs(logdir, exist_ok=True)
    state = args.state or os.path.join(logdir, "state.jsonl")
    command = "python3 tools/mutate.py --seed %s --count %d" % (args.seed, args.count)
    done = {}
    if (args.resume or args.only) and os.path.exists(state):
        with open(state) as fh:
            for line in fh:
                r = json.loads(line); done[r["id"]] = r
    elif os.path.exists(state): os.remove(state)
    fresh = lambda m: m["id"] not in done or {k: done[m["id"]].get(k) for k in m} != m
    todo = [m for m in mutants if m["id"] in args.only.split(",")] if args.only else [m for m in mutants if fresh(m)]
    if not all(git_clean(args.root, f) for f in {m["file"] for m in todo}):
        sys.exit("files to mutate have uncommitted changes: commit or stash them first")
    signal.signal(signal.SIGTERM, interrupted)
    if todo and not args.skip_baseline:  # the score means nothing unless the unmutated tree passes
        viable, failed, *_ = run_suite(args, os.path.join(logdir, "unmutated"))
        if not viable or failed: sys.exit("the unmutated tree does not build or pass: %s" % failed)
    try:
        for i, m in enumerate(todo, 1):
            r = try_mutant(args, m, logdir)
            done[m["id"]] = r
            with open(state, "a") as fh: fh.write(json.dumps(r) + "\n")
            print("[%d/%d] %s %s:%d %s: %s %s (build %.0fs, tests %.0fs)" % (i, len(todo), m["id"], m["file"], m["line"], m["kind"],
                  r["result"], r["failed"][0] if r["failed"] else "", r["build_s"], r["test_s"]), flush=True)
    finally:
        report(mutants, done, args.report or os.path.join(logdir, "report.md"), command)
    # Leave the build matching the restored sources, not the last mutant.
    if todo and run(["cmake", "--build", args.build_dir, "-j2"], os.path.join(logdir, "final.build"), args.build_timeout, args.root)[0] != 0:
        sys.exit("the restored tree does not build: see %s/final.build" % logdir)


if __name__ == "__main__":
    try: main()
    except KeyboardInterrupt: sys.exit("interrupted: the mutated file was restored; the build may hold the last mutant")
