"""Compiles one changed source file, links the unit tests with it, and runs them.

Nothing in the tree or its build changes: the changed file is compiled in a directory of its own, and
its object goes in front of the library that holds the original. So mutants can be tried side by side.
"""

import json
import os
import resource
import shlex
import signal
import subprocess
from pathlib import Path

MEMORY = 4 << 30  # bytes; a loop that eats memory ends early
LIBRARY = "libtavrin_core.a"


def _without(words: list[str], option: str) -> list[str]:
    """The command without an option and its value."""
    at = words.index(option)
    return words[:at] + words[at + 2:]


def _without_cache(command: str) -> list[str]:
    words = shlex.split(command)
    return words[1:] if Path(words[0]).name == "ccache" else words


class Program:
    """A program of unit tests, and how it is linked."""

    def __init__(self, build: Path, target: str):
        self.name = target
        self.build = build
        lines = subprocess.run(["ninja", "-C", str(build), "-t", "commands", target], check=True,
                               capture_output=True, text=True).stdout.splitlines()
        link = shlex.split(lines[-1].removeprefix(": && ").removesuffix(" && :"))
        self.path = build / link[link.index("-o") + 1]
        self.link = _without(link, "-o")
        self.limit = 60.0  # seconds of processor time, which do not depend on the machine's load
        listing = build / f"{target}.tests.json"
        subprocess.run([str(self.path), "--gtest_list_tests", f"--gtest_output=json:{listing}"],
                       check=True, stdout=subprocess.DEVNULL)
        self.tests: list[tuple[str, str]] = [
            (f"{suite['name']}.{test['name']}", test["file"])
            for suite in json.loads(listing.read_text())["testsuites"]
            for test in suite["testsuite"]]

    def filter_for(self, stem: str) -> str:
        """The tests of the source file `stem`, which are in STEM_test.cpp and STEM_TOPIC_test.cpp."""
        return ":".join(name for name, file in self.tests
                        if Path(file).name.startswith(stem + "_"))

    def link_with(self, archive: Path, output: Path) -> None:
        library = next(i for i, word in enumerate(self.link) if word.endswith(LIBRARY))
        command = self.link[:library] + [str(archive)] + self.link[library:] + ["-o", str(output)]
        subprocess.run(command, check=True, cwd=self.build)


def run_tests(program: Path, where: Path, test_filter: str, limit: float) -> str:
    """`passed`, `failed` or `time`."""
    def bound() -> None:
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        resource.setrlimit(resource.RLIMIT_CPU, (int(limit) + 1, int(limit) + 2))

    command = [str(program), "--gtest_fail_fast", "--gtest_brief=1"]
    if test_filter:
        command.append(f"--gtest_filter={test_filter}")
    process = subprocess.Popen(command, cwd=where, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, start_new_session=True,
                               preexec_fn=bound)
    try:
        code = process.wait(timeout=30 + 2 * limit)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return "time"
    if code in (-signal.SIGXCPU, -signal.SIGKILL):
        return "time"
    return "passed" if code == 0 else "failed"


class Build:
    """A finished build of the unit tests without sanitizers."""

    def __init__(self, root: Path, build: Path):
        self.root = root
        self.build = build
        self.commands = {
            str(Path(entry["file"]).relative_to(root)): _without_cache(entry["command"])
            for entry in json.loads((build / "compile_commands.json").read_text())
            if Path(entry["file"]).is_relative_to(root / "src")}
        targets = sorted(path.name for path in (build / "tests/unit").glob("unit_*")
                         if path.is_file() and os.access(path, os.X_OK))
        self.programs = [Program(build, target) for target in targets]

    def arguments(self, file: str) -> list[str]:
        """What clang's library needs of the file's command."""
        command = self.commands[file]
        return [word for word in command[1:] if word.startswith(("-I", "-D", "-std"))]

    def measure(self, scratch: Path) -> None:
        """The unchanged programs must pass; their times give the limits of the others."""
        for program in self.programs:
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            if run_tests(program.path, scratch, "", 300) != "passed":
                raise RuntimeError(f"{program.name} fails without any mutant")
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            used = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
            program.limit = 3 + 10 * used

    def compile(self, file: str, source: Path, output: Path, *options: str) -> bool:
        command = _without(self.commands[file], "-o")
        command = _without(command, "-c") + ["-g0", *options, "-c", str(source), "-o", str(output)]
        return subprocess.run(command, cwd=self.build, stderr=subprocess.DEVNULL).returncode == 0

    def programs_for(self, file: str) -> list[Program]:
        """The room's own programs first."""
        room = file.split("/")[1]
        return sorted(self.programs, key=lambda program: not program.name.startswith(f"unit_{room}"))
