"""script/format on a copy of its own folder structure."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Format(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        (self.root / "script").mkdir()
        shutil.copy(ROOT / "script/format", self.root / "script/format")
        shutil.copy(ROOT / ".clang-format", self.root)
        self.write("src/text/a.cc", "int f();\n")
        self.write("docs/a.md", "Text.\n")
        self.write("tests/data/a.cc", "int  f( ) ;  \n")

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def format(self, *arguments):
        return subprocess.run([self.root / "script/format", *arguments],
                              capture_output=True, text=True)

    def test_formatted_tree_passes_and_data_is_let_be(self):
        self.assertEqual(self.format("--check").returncode, 0)
        self.format()
        self.assertEqual((self.root / "tests/data/a.cc").read_text(), "int  f( ) ;  \n")

    def test_faults_are_named_and_put_right(self):
        source = self.write("src/text/a.cc", "int g();\nint  f( ) ;\n")
        text = self.write("docs/a.md", "Text. \n")
        run = self.format("--check")
        self.assertEqual(run.returncode, 1)
        self.assertIn("src/text/a.cc:2: not formatted", run.stdout)
        self.assertIn("docs/a.md:1:Text.", run.stdout)
        self.assertEqual(source.read_text(), "int g();\nint  f( ) ;\n")
        self.assertEqual(self.format().returncode, 0)
        self.assertEqual(source.read_text(), "int g();\nint f();\n")
        self.assertEqual(text.read_text(), "Text.\n")
        self.assertEqual(self.format("--check").returncode, 0)

    def test_only_named_files(self):
        self.write("src/text/a.cc", "int  f( ) ;\n")
        named = self.write("src/text/b.cc", "int f();\n")
        self.assertEqual(self.format("--check", str(named)).returncode, 0)


unittest.main()
