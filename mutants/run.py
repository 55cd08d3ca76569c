#!/usr/bin/env python3
"""How many planted faults the tests catch.

Each mutant of mutants/list.txt replaces one piece of text of a file of src/ in a copy of the tree
taken from a commit (HEAD unless told), the copy is rebuilt incrementally and the tests are run. A
mutant is killed when a test fails or hangs, survives when every test passes, and does not count
when it does not build. The working tree is only read, for the list.

    mutants/run.py [--commit REV] [--dir DIR] [--only 3,17] [--tests REGEX]

The tests run are all of ctest's but the desktop journeys and the install check, which take
minutes each; --tests chooses others (a ctest -R expression).
"""
import argparse
import io
import json
import os
import shutil
import signal
import subprocess
import sys
import tarfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SKIPPED_TESTS = r"^(journey|journey-memcheck|package)/"
TEST_SECONDS = 300  # a whole run: the tests take about 25 s, so a mutant that hangs is caught here
BUILD_SECONDS = 1800


def parse_list(path):
    """The mutants as dicts: what, file, old, new, number (from 1)."""
    mutants = []
    for block in path.read_text().split("\n## ")[1:]:
        lines = block.strip("\n").split("\n")
        if len(lines) < 4 or not lines[2].startswith("- ") or not (lines[3] == "+" or lines[3].startswith("+ ")):
            sys.exit(f"{path}: a mutant must be '## what', a file, '- old' and '+ new': {lines[0]!r}")
        mutants.append({"number": len(mutants) + 1, "what": lines[0], "file": lines[1],
                        "old": lines[2][2:], "new": lines[3][2:]})
    return mutants


def sync_tree(commit, tree):
    """Makes `tree` hold the files of `commit`, writing only those that differ, so the build that
    follows recompiles what changed and nothing else."""
    archive = subprocess.run(["git", "-C", str(ROOT), "archive", commit], check=True,
                             stdout=subprocess.PIPE).stdout
    wanted = set()
    with tarfile.open(fileobj=io.BytesIO(archive)) as tar:
        for member in tar:
            if not member.isfile():
                continue
            data = tar.extractfile(member).read()
            target = tree / member.name
            wanted.add(target)
            if target.is_file() and target.read_bytes() == data:
                continue
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(data)
            os.chmod(target, member.mode)
    for path in sorted(tree.rglob("*"), reverse=True):
        if path.is_file() and path not in wanted:
            path.unlink()


def run(cmd, cwd, seconds, log, env=None):
    """Runs `cmd` in a process group of its own; returns (exit code or None on timeout, output)."""
    started = time.monotonic()
    proc = subprocess.Popen(cmd, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=env,
                            start_new_session=True, text=True, errors="replace")
    try:
        out, _ = proc.communicate(timeout=seconds)
        code = proc.returncode
    except subprocess.TimeoutExpired:
        os.killpg(proc.pid, signal.SIGKILL)
        out, _ = proc.communicate()
        code = None
    log.write(f"$ {' '.join(cmd)}  ({time.monotonic() - started:.0f} s, exit {code})\n{out}\n")
    log.flush()
    return code, out


def configure(tree, build, log):
    if (build / "CMakeCache.txt").exists():
        return
    # Unoptimized and without debug information: each mutant recompiles one file and relinks every
    # test, and that is what takes the time.
    linker = "lld" if shutil.which("ld.lld") else "gold"
    code, out = run(["cmake", "-S", str(tree), "-B", str(build), "-DCMAKE_BUILD_TYPE=Debug",
                     "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DCMAKE_C_FLAGS_DEBUG=-O0", "-DVELTRICK_BENCH=OFF",
                     f"-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld={linker}"], ROOT, 600, log)
    if code != 0:
        sys.exit(f"configuring the copy failed:\n{out[-3000:]}")


def build_and_test(build, tests, jobs, log):
    """'did not build', 'killed' (with the test that failed) or 'survived'."""
    code, _ = run(["cmake", "--build", str(build), f"-j{jobs}"], build, BUILD_SECONDS, log)
    if code != 0:
        return "did not build", ""
    select = ["-R", tests] if tests else ["-E", SKIPPED_TESTS]
    code, out = run(["ctest", f"-j{jobs}", "--stop-on-failure", "--output-on-failure"] + select, build,
                    TEST_SECONDS, log, env=dict(os.environ, QT_QPA_PLATFORM="offscreen"))
    if code is None:
        return "killed", "(the tests hung)"
    if code == 0:
        return "survived", ""
    # "12/39 Test  #7: jobs/test_jobs .........***Failed  0.03 sec"
    failed = [l.split()[3] for l in out.splitlines() if " Test " in l and "***" in l and len(l.split()) > 3]
    return "killed", failed[0] if failed else "(a test failed)"


def line_of(text, old):
    return text[:text.index(old)].count("\n") + 1


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--commit", default="HEAD")
    ap.add_argument("--dir", default=str(ROOT / "build-mutants"))
    ap.add_argument("--list", default=str(ROOT / "mutants" / "list.txt"))
    ap.add_argument("--only", default="", help="numbers of the mutants to run, comma separated")
    ap.add_argument("--tests", default="", help="a ctest -R expression instead of the usual tests")
    ap.add_argument("--jobs", default=os.environ.get("JOBS", "2"))
    args = ap.parse_args()

    mutants = parse_list(Path(args.list))
    if args.only:
        keep = {int(n) for n in args.only.split(",")}
        mutants = [m for m in mutants if m["number"] in keep]
    workdir = Path(args.dir).resolve()
    tree, build = workdir / "tree", workdir / "build"
    tree.mkdir(parents=True, exist_ok=True)
    commit = subprocess.run(["git", "-C", str(ROOT), "rev-parse", "--short", args.commit], check=True,
                            stdout=subprocess.PIPE, text=True).stdout.strip()
    log = open(workdir / "log.txt", "w")
    sync_tree(args.commit, tree)

    originals = {}
    for m in mutants:
        path = tree / m["file"]
        if not path.is_file():
            sys.exit(f"mutant {m['number']} ({m['what']}): no file {m['file']}")
        text = originals.setdefault(m["file"], path.read_text())
        if text.count(m["old"]) != 1:
            sys.exit(f"mutant {m['number']} ({m['what']}): the text occurs {text.count(m['old'])} times "
                     f"in {m['file']}: {m['old']!r}")
        m["line"] = line_of(text, m["old"])

    configure(tree, build, log)
    print(f"commit {commit}: building the copy and running the tests unchanged", flush=True)
    outcome, detail = build_and_test(build, args.tests, args.jobs, log)
    if outcome != "survived":
        sys.exit(f"the unchanged tree must build and pass its tests ({outcome} {detail}); see {log.name}")

    results = []
    try:
        for m in mutants:
            path = tree / m["file"]
            original = originals[m["file"]]
            path.write_text(original.replace(m["old"], m["new"], 1))
            started = time.monotonic()
            outcome, detail = build_and_test(build, args.tests, args.jobs, log)
            path.write_text(original)
            results.append(dict(m, outcome=outcome, by=detail))
            print(f"{m['number']:3} {outcome:13} {time.monotonic() - started:5.0f} s  "
                  f"{m['file']}:{m['line']}  {m['what']}  {detail}", flush=True)
    finally:
        for name, text in originals.items():
            (tree / name).write_text(text)

    counts = {k: sum(r["outcome"] == k for r in results) for k in ("killed", "survived", "did not build")}
    judged = counts["killed"] + counts["survived"]
    score = 100.0 * counts["killed"] / judged if judged else 0.0
    lines = [f"commit {commit}, {len(results)} mutants: {counts['killed']} killed, {counts['survived']} survived, "
             f"{counts['did not build']} did not build; score {score:.1f}%"]
    lines += [f"  survived: {r['file']}:{r['line']}  {r['what']}  ({r['old']!r} -> {r['new']!r})"
              for r in results if r["outcome"] == "survived"]
    lines += [f"  did not build: {r['file']}:{r['line']}  {r['what']}"
              for r in results if r["outcome"] == "did not build"]
    report = "\n".join(lines) + "\n"
    print(report, end="")
    (workdir / f"report-{commit}.txt").write_text(report)
    (workdir / f"results-{commit}.json").write_text(json.dumps(results, indent=1))


if __name__ == "__main__":
    main()
