"""Runs tests with one mutant switched on at a time, until one of them fails."""
import json
import os
import re
import subprocess
import threading
from concurrent.futures import ThreadPoolExecutor

SECONDS = 60  # a test that takes longer has noticed, too
# The override file is the whole machine's: nothing else may run beside what makes it. What looks at the library from
# outside knows nothing of its code, but for the program that calls it from C.
LABELS = {"unit", "bus", "abi"}
NOT_HERE = re.compile(r"^abi\.(?!from_c$)|SupportOverride|\(Disabled\)|Storm|refused_by_compiler|AllAtOnce")


class Tests:
    """The tests as ctest knows them."""

    def __init__(self, build):
        listing = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True,
                                 text=True)
        self.commands, self.environments = {}, {}
        for test in json.loads(listing.stdout)["tests"]:
            properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
            is_asked = LABELS & set(properties.get("LABELS", [])) and not NOT_HERE.search(test["name"])
            if not is_asked or "command" not in test or properties.get("DISABLED") or "_NOT_BUILT" in test["name"]:
                continue
            self.commands[test["name"]] = test["command"]
            self.environments[test["name"]] = properties.get("ENVIRONMENT", [])
        self.plain, self.lock = {}, threading.Lock()

    def matching(self, patterns):
        """The names that match, in the order of the patterns; then all others of the fast ones."""
        seen = {}
        for pattern in patterns:
            seen |= dict.fromkeys(name for name in self.commands if re.search(pattern, name))
        return list(seen)

    def passes(self, name, mutant):
        environment = dict(os.environ) | dict(value.split("=", 1) for value in self.environments[name])
        environment["PVR_MUTANT"] = str(mutant)
        try:
            return subprocess.run(self.commands[name], env=environment, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=SECONDS,
                                  check=False).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def passes_plain(self, name):
        """With no mutant, which is asked once."""
        with self.lock:
            known = self.plain.get(name)
        if known is None:
            known = self.passes(name, 0)
            with self.lock:
                self.plain[name] = known
        return known

    def killer(self, mutant):
        """The test that notices a mutant, or nothing."""
        likely = self.matching(mutant.tests)
        tried = [*likely, *(name for name in self.commands if name not in likely and "/All/" not in name)]
        for name in tried:
            if not self.passes(name, mutant.number):
                if not self.passes_plain(name):
                    raise SystemExit(f"mutate: {name} fails with no mutant")
                return name
        return None


def judged(tests, mutants, jobs, tell):
    """The killer of each mutant; tell is called with each mutant and its killer."""
    with ThreadPoolExecutor(jobs) as pool:
        found = {}
        for mutant, name in zip(mutants, pool.map(tests.killer, mutants)):
            found[mutant.number] = name
            tell(mutant, name)
    return found
