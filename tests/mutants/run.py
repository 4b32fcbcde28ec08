"""Makes a sample of mutants of src/ and holds each against the unit tests; see scripts/mutants.sh."""

import argparse
import random
import subprocess
import sys
import tempfile
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from build import Build, run_tests
from listed import Key, read_list, show
from sites import Site, find_sites

ROOT = Path(__file__).resolve().parents[2]
LIST = ROOT / "tests/mutants/living.txt"
WANTED = 97.0  # percent
COLUMNS = ["made", "not compiled", "same code", "killed", "by time", "listed", "living"]


def try_mutant(build: Build, site: Site, scratch: Path) -> str:
    """`not compiled`, `same code`, `killed`, `by time` or `living`."""
    with tempfile.TemporaryDirectory(dir=scratch) as directory:
        here = Path(directory)
        original = (ROOT / site.file).read_bytes()
        mutant = here / Path(site.file).name
        mutant.write_bytes(original[:site.start] + site.new + original[site.end:])
        compiled = here / f"{mutant.name}.o"
        if not build.compile(site.file, mutant, compiled):
            return "not compiled"
        archive = here / "mutant.a"
        subprocess.run(["ar", "rcs", str(archive), str(compiled)], check=True)
        verdict = hold_against_tests(build, site, archive, here)
        if verdict == "living" and has_same_code(build, site, mutant, here):
            return "same code"
        return verdict


def hold_against_tests(build: Build, site: Site, archive: Path, here: Path) -> str:
    """The tests of the file itself come first, then its room's, then all others."""
    stem = Path(site.file).stem
    for program in build.programs_for(site.file):
        output = here / program.name
        program.link_with(archive, output)
        own = program.filter_for(stem)
        for test_filter in [own, ""] if own else [""]:
            verdict = run_tests(output, here, test_filter, program.limit)
            if verdict != "passed":
                return "killed" if verdict == "failed" else "by time"
        output.unlink()
    return "living"


def has_same_code(build: Build, site: Site, mutant: Path, here: Path) -> bool:
    """Whether the optimiser makes the same bytes of the mutant and of the original."""
    objects = []
    for name, source in (("a", mutant), ("b", ROOT / site.file)):
        directory = here / name
        directory.mkdir()
        copy = directory / mutant.name
        copy.write_bytes(source.read_bytes())
        objects.append(directory / "object.o")
        if not build.compile(site.file, copy, objects[-1], "-O2"):
            return False
    return objects[0].read_bytes() == objects[1].read_bytes()


def choose(sites: list[Site], options: argparse.Namespace, listed: dict[Key, str]) -> list[Site]:
    if options.listed:
        return [site for site in sites if site.key in listed]
    count = min(options.count, len(sites))
    return random.Random(options.seed).sample(sites, count)


def print_table(results: list[tuple[Site, str]]) -> None:
    rows = {operator: Counter() for operator in sorted({site.operator for site, _ in results})}
    rows["all"] = Counter()
    for site, verdict in results:
        for row in (rows[site.operator], rows["all"]):
            row.update(["made", verdict])
    print(f"{'operator':20}" + "".join(f"{column:>14}" for column in COLUMNS))
    for operator, row in rows.items():
        print(f"{operator:20}" + "".join(f"{row[column]:14}" for column in COLUMNS))


def report(results: list[tuple[Site, str]], gone: list[Key], listed: dict[Key, str]) -> bool:
    """Prints the outcome; true when it is good enough."""
    for site, verdict in results:
        if verdict == "living":
            print(f"\nliving, line {site.line}, {site.operator}:\n{show(site.key)}")
    stale = [site for site, verdict in results
             if site.key in listed and verdict in ("killed", "by time")]
    for site in stale:
        print(f"\nlisted, and yet killed:\n{show(site.key)}")
    for key in gone:
        print(f"\nlisted, and no longer in the code:\n{show(key)}")
    print()
    print_table(results)
    count = Counter(verdict for _, verdict in results)
    compiled = len(results) - count["not compiled"] - count["same code"]
    killed = count["killed"] + count["by time"]
    if compiled == 0:
        print("\nno mutant was compiled")
        return False
    explained = 100 * (killed + count["listed"]) / compiled
    print(f"\n{killed} of {compiled} compiled mutants killed: {100 * killed / compiled:.1f} %; "
          f"with the listed ones {explained:.1f} %, {WANTED:.0f} % wanted")
    return explained >= WANTED and not stale and not gone


def parse_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="scripts/mutants.sh")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=200, help="size of the sample")
    parser.add_argument("--file", action="append", help="only mutants of this file")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--listed", action="store_true", help="the listed mutants, no sample")
    return parser.parse_args()


def main() -> int:
    options = parse_options()
    build = Build(ROOT, ROOT / "build/mutants")
    listed = read_list(LIST)
    with ThreadPoolExecutor(options.jobs) as pool:
        everything = [site for sites in pool.map(
            lambda file: find_sites(ROOT, file, build.arguments(file)), sorted(build.commands))
            for site in sites]
    known = {site.key for site in everything}
    gone = [key for key in listed if key not in known]
    wanted = [site for site in everything if not options.file or site.file in options.file]
    sample = choose(wanted, options, listed)
    print(f"{len(wanted)} places for mutants, {len(sample)} of them in the sample, "
          f"seed {options.seed}", flush=True)
    with tempfile.TemporaryDirectory(prefix="mutants.") as directory:
        scratch = Path(directory)
        build.measure(scratch)

        def one(site: Site) -> tuple[Site, str]:
            verdict = try_mutant(build, site, scratch)
            if verdict == "living" and site.key in listed:
                verdict = "listed"
            if verdict == "living":
                print(f"line {site.line}: {show(site.key)}", file=sys.stderr, flush=True)
            return site, verdict

        with ThreadPoolExecutor(options.jobs) as pool:
            results = list(pool.map(one, sample))
    return 0 if report(results, gone, listed) else 1


if __name__ == "__main__":
    sys.exit(main())
