"""script/setup with doubles for dpkg-query, apt-get, id and sudo that record their calls."""

import os
import pathlib
import pty
import shutil
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "script/setup"


class Setup(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.calls = pathlib.Path(self.folder.name, "calls")
        self.calls.touch()
        self.double("dpkg-query", 'for package; do echo "ii  $package"; done')
        self.double("apt-get", f'echo "apt-get $*" >>{self.calls}; [ -z "$(cat)" ]')
        self.double("sudo", f'echo "sudo $*" >>{self.calls}')

    def double(self, name, body):
        path = pathlib.Path(self.folder.name, name)
        path.write_text(f"#!/bin/sh\n{body}\n")
        path.chmod(0o755)

    def missing(self, *packages):
        """Makes these packages the only ones that are not there, the last one half removed."""
        gone = "|".join(packages)
        self.double("dpkg-query", f'''
            for package; do
              case $package in {gone}) ;; *) echo "ii  $package" ;; esac
            done
            echo "rc  {packages[-1]}"
            exit 1''')

    def user(self, uid):
        self.double("id", f"echo {uid}")

    def setup(self, *options, stdin=subprocess.DEVNULL):
        environment = {**os.environ, "PATH": f"{self.folder.name}:{os.environ['PATH']}"}
        return subprocess.run([SCRIPT, *options], env=environment, stdin=stdin,
                              capture_output=True, text=True)

    def answer(self, text):
        """Runs setup on a terminal where the text is typed."""
        ours, theirs = pty.openpty()
        os.write(ours, text.encode())
        try:
            return self.setup(stdin=theirs)
        finally:
            os.close(ours)
            os.close(theirs)

    def test_nothing_missing_is_quiet(self):
        self.user(1000)
        run = self.setup()
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "", ""))
        self.assertEqual(self.calls.read_text(), "")

    def test_root_installs_only_what_is_missing(self):
        self.missing("cmake", "xvfb")
        self.user(0)
        run = self.setup()
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(self.calls.read_text().splitlines(), [
            "apt-get -q update",
            "apt-get -q -y --no-install-recommends install cmake xvfb",
        ])

    def test_run_needs_no_test_tools(self):
        self.missing("cmake", "xvfb")
        self.user(0)
        self.setup("--run")
        self.assertIn("install cmake\n", self.calls.read_text())

    def test_failed_installation_is_reported(self):
        self.missing("cmake")
        self.user(0)
        self.double("apt-get", "exit 100")
        self.assertEqual(self.setup().returncode, 100)

    def test_goes_on_without_what_is_optional(self):
        self.missing("qt6-webengine-dev")
        self.user(0)
        self.double("apt-get", f'echo "$*" >>{self.calls}; [ "$2" = update ]')
        run = self.setup()
        self.assertEqual(run.returncode, 0)
        self.assertIn("going on without qt6-webengine-dev", run.stderr)
        self.calls.write_text("")
        self.assertEqual(self.setup("--lean").returncode, 0)
        self.assertEqual(self.calls.read_text(), "")

    def test_without_terminal_the_command_is_named(self):
        self.missing("cmake")
        self.user(1000)
        run = self.setup()
        self.assertEqual(run.returncode, 1)
        self.assertIn("apt-get -q -y --no-install-recommends install cmake", run.stderr)
        self.assertEqual(self.calls.read_text(), "")

    def test_sudo_only_after_a_yes(self):
        self.missing("cmake")
        self.user(1000)
        self.assertEqual(self.answer("n\n").returncode, 1)
        self.assertEqual(self.calls.read_text(), "")
        self.assertEqual(self.answer("y\n").returncode, 0)
        self.assertEqual(self.calls.read_text().splitlines()[-1],
                         "sudo env DEBIAN_FRONTEND=noninteractive "
                         "apt-get -q -y --no-install-recommends install cmake")

    def test_list_names_every_package_once(self):
        packages = self.setup("--bench", "--list").stdout.split()
        self.assertEqual(len(packages), len(set(packages)))
        self.assertLess(set(self.setup("--run", "--list").stdout.split()), set(packages))
        self.assertEqual(self.calls.read_text(), "")

    def without_packages(self, *lacking):
        """Runs setup where there is no apt-get: it finds doubles of all programs but those."""
        for tool in ("bash", "cat", "sed", "grep"):
            os.symlink(shutil.which(tool), pathlib.Path(self.folder.name, tool))
        for tool in ("apt-get", "dpkg-query", "sudo"):
            pathlib.Path(self.folder.name, tool).unlink()
        for tool in ("cmake", "ninja", "java", "c++", "pkg-config", "clang-format", "clang-tidy",
                     "python3",
                     "dbus-run-session", "import", "openbox", "strace", "xwininfo", "xclip",
                     "xdotool", "Xvfb", "git", "make", "man", "patch", "shellcheck", "xmllint"):
            wanted = "|".join(lacking) or "nothing"
            self.double(tool, f'case "$* $(cat)" in *{wanted}*) exit 1 ;; esac')
            if tool in lacking:
                pathlib.Path(self.folder.name, tool).unlink()
        environment = {"PATH": self.folder.name}
        return subprocess.run([shutil.which("bash"), SCRIPT], env=environment,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True)

    def test_other_systems_are_asked_for_the_things_themselves(self):
        for lacking, named in (((), None), (("ninja",), "program ninja"),
                               (("msgpack.hpp",), "header msgpack.hpp"),
                               (("Qt6Widgets",), "library Qt6Widgets"), (("Xvfb",), "program Xvfb")):
            with self.subTest(lacking=lacking):
                self.setUp()
                run = self.without_packages(*lacking)
                missing = [line.strip() for line in run.stderr.splitlines() if line[:2] == "  "]
                missing = [line for line in missing if line != "jar antlr.jar"]
                self.assertEqual(missing, [named] if named else [])

    def test_unknown_option(self):
        self.assertEqual(self.setup("--frobnicate").returncode, 2)


unittest.main()
