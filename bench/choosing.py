"""A row of bench/run about Go to File: its files, and the letters by which they are found."""

import json
import os
import random
import shutil
import subprocess

from measuring import interleaved

FILES, FILES_IN_FOLDER = 200_000, 15
WORDS = ("main test util index view model file buffer parser token widget font color window panel "
         "list tree node cache request handler server client config project search match").split()
ENDINGS = "c h cc py js ts md txt json css".split()


def make_files(top):
    choice = random.Random(15)
    folders = [top]
    top.mkdir()
    for number in range(FILES):
        if number % FILES_IN_FOLDER == 0 and number:
            folder = folders[choice.randrange(len(folders))] / f"{choice.choice(WORDS)}{number}"
            folder.mkdir()
            folders.append(folder)
        first, second = choice.choice(WORDS), choice.choice(WORDS)
        name = f"{first}{second.title()}" if number % 3 else f"{first}_{second}{number}"
        (folders[-1] / f"{name}{number % 97}.{choice.choice(ENDINGS)}").touch()


class Choosing:
    def __init__(self, benchmark, bin_folder):
        self.table, self.sandbox, self.repeat = benchmark.table, benchmark.sandbox, benchmark.repeat
        self.program = bin_folder / "file_choosing"
        self.folder = benchmark.workload.folder / "many-files"
        self.names = benchmark.workload.folder / "many-files.txt"

    def timing(self, letters):
        result = subprocess.run([self.program, self.folder, letters], env=self.sandbox.env,
                                capture_output=True, text=True, timeout=280, check=True)
        return json.loads(result.stdout)

    def choosing(self):
        if not self.folder.exists():
            make_files(self.folder)
        paths = [os.path.join(at, name) for at, _, names in os.walk(self.folder) for name in names]
        self.names.write_text("".join(path + "\n" for path in paths))
        finder = shutil.which("fd") or shutil.which("fdfind")
        tasks = {f"ours {letters}": lambda l=letters: self.timing(l) for letters in ("e", "main")}
        if finder:
            tasks["fd"] = lambda: self.sandbox.run([finder, ".", str(self.folder)])
        if shutil.which("fzf"):
            command = f"taskset -c 0 fzf --filter e <'{self.names}' >/dev/null; true"
            tasks["fzf"] = lambda: self.sandbox.run(["sh", "-c", command])
        results = interleaved(self.repeat, tasks)
        collected = min(sample["collect"] for sample in results["ours e"])
        letter = min(sample["letter"] for sample in results["ours e"])
        typed = min(sample["letter"] for sample in results["ours main"])
        for peer, work, value, limit in (
                ("fd", f"{FILES} files ready to go to, user and system time", collected, 1.5),
                ("fzf", f"a letter among {FILES} names, user and system time", letter, 1)):
            if peer in results:
                self.table.add(work, value, peer, min(s.cpu for s in results[peer]), limit)
            else:
                self.table.add_missing(work, peer)
        self.table.add_limit("… in milliseconds", letter, 16)
        self.table.add_limit("… the longest of four letters", typed, 16)
