"""Runs the tests of a build without ctest, each with its own environment."""

import dataclasses
import json
import os
import re
import resource
import signal
import subprocess
import tempfile
import time

ADDRESS_LIMIT = 16 << 30  # a fault may request any amount of memory
GROUP_SECONDS = 8  # of tests that one process runs


@dataclasses.dataclass
class Test:
    name: str
    command: list
    environment: dict
    folder: str
    passes: str = None  # a pattern that the output must match, instead of exit code 0
    seconds: float = 0.0
    reached: frozenset = frozenset()

    def filter(self):
        """The GoogleTest filter, if the command runs one test of a program."""
        filters = [part for part in self.command[1:] if part.startswith("--gtest_filter=")]
        return filters[0].split("=", 1)[1] if filters else None


def listed(build):
    """All tests that ctest lists for a build folder, except those that start builds."""
    output = subprocess.run(["ctest", "--show-only=json-v1"], cwd=build, stdout=subprocess.PIPE, check=True).stdout
    tests = []
    for entry in json.loads(output)["tests"]:
        if "command" not in entry or entry["name"].startswith("PackageTest"):
            continue
        properties = {item["name"]: item["value"] for item in entry.get("properties", [])}
        environment = dict(item.split("=", 1) for item in properties.get("ENVIRONMENT", []))
        passes = properties.get("PASS_REGULAR_EXPRESSION", [None])[0]
        tests.append(Test(entry["name"], entry["command"], environment,
                          properties.get("WORKING_DIRECTORY", build), passes))
    return tests


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_LIMIT, ADDRESS_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def execute(command, test, environment, limit):
    """Runs a command as ctest does. Returns: whether it passed, and its output."""
    with tempfile.TemporaryFile() as output:
        process = subprocess.Popen(command, cwd=test.folder, env={**os.environ, **test.environment, **environment},
                                   stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                                   start_new_session=True, preexec_fn=limit_memory)
        try:
            exit_code = process.wait(limit)
        except subprocess.TimeoutExpired:
            exit_code = None
        finally:
            try:  # also ends children of the test
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
        output.seek(0)
        text = output.read().decode(errors="replace")
    if exit_code is None:
        return False, text + "\ntimed out"
    return (re.search(test.passes, text) is not None if test.passes else exit_code == 0), text


def trace(test, faults):
    """Runs one test without a fault, measures it and records the faults that it reaches. Returns: whether it passed."""
    with tempfile.NamedTemporaryFile() as reached:
        reached.write(bytes(4096))
        reached.flush()
        start = time.monotonic()
        passed, _ = execute(test.command, test, {"VELMODEL_REACHED_FAULTS": reached.name}, 600)
        test.seconds = time.monotonic() - start
        reached.seek(0)
        marks = reached.read()
    test.reached = frozenset(fault.number for fault in faults if marks[fault.number])
    return passed


def groups(tests):
    """Groups of tests that run in one process, the quick tests first."""
    result = []
    programs = {}
    for test in sorted(tests, key=lambda test: test.seconds):
        if test.filter() is None:
            result.append([test])
            continue
        key = (test.command[0], tuple(sorted(test.environment.items())))
        open_group = programs.get(key)
        if open_group is None or sum(other.seconds for other in open_group) > GROUP_SECONDS:
            open_group = programs[key] = []
            result.append(open_group)
        open_group.append(test)
    return sorted(result, key=lambda group: sum(test.seconds for test in group))


def limit_for(tests):
    return 20 + 10 * sum(test.seconds for test in tests)


def killer(fault, tests):
    """The first test that fails with a fault switched on; None if all tests that reach it pass."""
    environment = {"VELMODEL_FAULT": str(fault.number)}
    for group in groups([test for test in tests if fault.number in test.reached]):
        suspects = group
        if len(group) > 1:
            command = [group[0].command[0], "--gtest_fail_fast", "--gtest_filter=" + ":".join(
                test.filter() for test in group)]
            passed, text = execute(command, group[0], environment, limit_for(group))
            if passed:
                continue
            # A test that fails in a group may pass alone. Then each test of the group is run alone.
            started = re.findall(r"^\[ RUN      \] (\S+)", text, re.MULTILINE)
            last = [test for test in group if started and test.filter() == started[-1]]
            suspects = last + [test for test in group if test not in last]
        for test in suspects:
            passed, _ = execute(test.command, test, environment, limit_for([test]))
            if not passed:
                return test
    return None
