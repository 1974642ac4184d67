#!/usr/bin/env python3
"""Plants again, on the tests of this checkout, each fault that an earlier run of mutants.py
(same files, --per-file and --seed) reports as killed in its log, and says whether it is still
killed. The faults are chosen by mutants.py's own code, so they are the same ones; a fault the
earlier run let survive is not planted again.

  scripts/mutants-recheck.py BEFORE.log --per-file N --seed S [--json OUT] FILE...
"""
import argparse, json, os, random, re, sys, time
# mutants.py lives in the shared tools beside the checkout
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "shared", "tools"))
import mutants as m

ap = argparse.ArgumentParser()
ap.add_argument("before")
ap.add_argument("files", nargs="+")
ap.add_argument("--build", default="build-dev")
ap.add_argument("--per-file", type=int, default=8)
ap.add_argument("--seed", type=int, default=1)
ap.add_argument("--json")
args = ap.parse_args()
killed_before = set()
for line in open(args.before, encoding="utf-8"):
    f = line.split()
    if len(f) >= 2 and f[0] == "killed":
        killed_before.add(f[1])
env = dict(os.environ, QT_QPA_PLATFORM="offscreen")
if os.geteuid() == 0:
    env["QTWEBENGINE_DISABLE_SANDBOX"] = "1"
rc, out = m.run(["cmake", "--build", args.build], 3600)
if rc != 0:
    sys.exit("the build tree does not build:\n" + out[-2000:])
results = []
for path in args.files:
    lines, all_sites = m.sites(path)
    rng = random.Random(f"{args.seed}:{path}")
    chosen = sorted(rng.sample(all_sites, min(args.per_file, len(all_sites))))
    original = "\n".join(lines)
    for site in chosen:
        where = f"{path}:{site[0] + 1}"
        if where not in killed_before:
            continue
        before = m.executables(args.build)
        started = time.time()
        try:
            open(path + ".mutants-orig", "w", encoding="utf-8").write(original)
            open(path, "w", encoding="utf-8").write("\n".join(m.mutate(lines, site)))
            rc, out = m.run(["cmake", "--build", args.build], 1800)
            if rc != 0:
                verdict, tests = "invalid", []
            else:
                after = m.executables(args.build)
                tests = sorted(n for n, t in after.items() if t > before.get(n, 0))
                rx = "^(" + "|".join(re.escape(t) for t in tests) + ")(_.*)?$"
                rc, out = m.run(["ctest", "--test-dir", args.build, "--timeout", "120", "-R", rx, "-j2",
                                 "--stop-on-failure"], 600, env=env) if tests else (0, "")
                verdict = "killed" if rc != 0 else ("survived" if tests else "unreached")
        finally:
            open(path, "w", encoding="utf-8").write(original)
            os.remove(path + ".mutants-orig")
        r = {"file": path, "line": site[0] + 1, "fault": site[4], "code": lines[site[0]].strip()[:120],
             "verdict": verdict, "tests": tests, "seconds": round(time.time() - started, 1)}
        results.append(r)
        print(f"{verdict:9} {where}  {site[4]:20} {r['code'][:70]}", flush=True)
m.run(["cmake", "--build", args.build], 3600)
still = sum(r["verdict"] == "killed" for r in results)
if args.json:
    json.dump({"seed": args.seed, "per_file": args.per_file, "results": results}, open(args.json, "w"), indent=1)
print(f"faults killed before: {len(results)}; killed again: {still}; no longer killed: {len(results) - still}")
