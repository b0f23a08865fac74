"""What batch mode writes on standard output is for other programs: no message goes there."""

import pathlib
import re
import unittest

SRC = pathlib.Path(__file__).resolve().parents[2] / "src"
WRITES = re.compile(r"(?<![\w{])(printf|puts|putchar)\(|\bcout\b|\bstdout\b")
# Help and version; what flushes; what another program of ours reads.
ANSWERS = {"main.cc", "desktop/PlatformStart.cc", "privileged/write_file.cc", "quirn/main.cc"}


class StandardOutput(unittest.TestCase):
    def test_only_answers_are_written(self):
        found = [
            f"{path.relative_to(SRC)}: {line.strip()}"
            for path in SRC.rglob("*.cc")
            if str(path.relative_to(SRC)) not in ANSWERS
            for line in path.read_text().splitlines()
            if WRITES.search(line)
        ]
        self.assertEqual(found, [])


if __name__ == "__main__":
    unittest.main()
