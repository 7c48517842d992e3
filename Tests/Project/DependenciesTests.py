"""The script that installs packages: what it asks for, and what it does when it may not or cannot."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "Scripts/install-dependencies"

# Stand-ins for the system's tools, in front of these. What is missing, what cannot be installed and who
# runs the script is in the environment; what was to be installed goes to a file.
TOOLS = {
    "dpkg-query": """for word in "$@"; do
    case $word in --* | '${'*) ;; *) [[ " $MISSING " == *" $word "* ]] || echo "installed $word" ;; esac
done""",
    "apt-get": """words=$*
[[ $words != *install* ]] || echo "${words##*--no-install-recommends }" >> "$INSTALLED"
[ -z "$BROKEN" ] || [[ $words != *" $BROKEN"* ]]""",
    "id": """echo "$USER_ID" """,
    "sudo": "exit 1",
}


class Dependencies(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name, text in TOOLS.items():
            (self.folder / name).write_text(f"#!/usr/bin/env bash\n{text}\n", encoding="utf-8")
            (self.folder / name).chmod(0o755)

    def run_script(self, *groups, missing="", broken="", user=0):
        """Its exit code, what it said, and what it installed, one line a try."""
        installed = self.folder / "installed"
        environment = os.environ | {"PATH": f"{self.folder}:{os.environ['PATH']}", "MISSING": missing, "BROKEN": broken,
                                    "USER_ID": str(user), "INSTALLED": str(installed)}
        run = subprocess.run([SCRIPT, *groups], capture_output=True, text=True, check=False, env=environment)
        tries = installed.read_text(encoding="utf-8").splitlines() if installed.exists() else []
        return run.returncode, run.stdout + run.stderr, tries

    def test_it_says_nothing_where_nothing_is_missing(self):
        self.assertEqual(self.run_script("build", "objc"), (0, "", []))

    def test_it_installs_what_is_missing_and_nothing_else(self):
        code, _, tries = self.run_script("build", "objc", missing="cmake libobjc-12-dev strace")
        self.assertEqual((code, tries), (0, ["cmake libobjc-12-dev"]))

    def test_who_may_not_install_is_told_the_command(self):
        code, said, tries = self.run_script("build", missing="cmake", user=1000)
        self.assertEqual((code, tries), (1, []))
        self.assertIn("apt-get install --yes --no-install-recommends cmake\n", said)

    def test_what_objective_c_needs_can_be_done_without(self):
        code, said, _ = self.run_script("build", "objc", missing="libobjc-12-dev", user=1000)
        self.assertEqual(code, 0)
        self.assertIn("Carrying on without them: Tallyfoot::ObjC and the shop app are not built.", said)

    def test_the_others_are_installed_where_it_cannot_be(self):
        code, said, tries = self.run_script("build", "objc", missing="cmake libobjc-12-dev", broken="libobjc-12-dev")
        self.assertEqual((code, tries), (0, ["cmake libobjc-12-dev", "cmake"]))
        self.assertIn("Carrying on without them", said)

    def test_one_that_is_needed_is_not_done_without(self):
        code, _, tries = self.run_script("build", "objc", missing="cmake libobjc-12-dev", broken="cmake")
        self.assertEqual((code, tries), (1, ["cmake libobjc-12-dev", "cmake"]))


if __name__ == "__main__":
    unittest.main()
