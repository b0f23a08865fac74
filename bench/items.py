"""Rows of bench/run about bundle items, transformations of large texts, and mixed macros."""

import filecmp
import json
import subprocess

from bundle_tree import make_tree
from measuring import interleaved, make_once, median
from searching import least

LINES = 1_000_000
ROUNDS = 10_000
MIXED = [("findWithOptions:", {"action": "findNext", "findString": "accepted"}),
         ("moveRight:", None), ("insertSnippet:", {"content": "<${1:a}|$1>$0"}),
         ("insertText:", "xy"), ("nextSnippetField:", None), ("insertText:", ";"),
         ("moveToBeginningOfLine:", None), ("insertText:", "#"), ("moveToEndOfLine:", None)]
MIXED_OF_VIM = "/accepted\rea<xy|xy>;\x1b0i#\x1b$"


class Items:
    def __init__(self, benchmark, ours, vim, bin_folder):
        self.table, self.workload = benchmark.table, benchmark.workload
        self.sandbox, self.repeat = benchmark.sandbox, benchmark.repeat
        self.ours, self.vim, self.bin = ours, vim, bin_folder
        self.folder = self.workload.folder

    def batch(self, name, steps, *more):
        return [self.ours, "--batch", "--macro", self.workload.macro(name, steps), *more]

    def run_all(self, commands):
        return interleaved(self.repeat, {name: (lambda c=command: self.sandbox.run(c))
                                         for name, command in commands.items()})

    def timing(self, data, language):
        env = {**self.sandbox.env, "XDG_DATA_HOME": str(data), "XDG_CACHE_HOME": str(data / "cache")}
        result = subprocess.run([self.bin / "item_timing", self.workload.log_10, language], env=env,
                                capture_output=True, text=True, timeout=280, check=True)
        return json.loads(result.stdout)

    def items(self):
        """10,000 items more than what ships, and without."""
        data = self.folder / "bundle-tree"
        make_tree(data / "Quirnote" / "Bundles")
        results = interleaved(self.repeat, {
            "with": lambda: self.timing(data, "source.b7"),
            "without": lambda: self.timing(self.folder / "data", "source.c")})
        took = {name: median(results["with"], name) for name in results["with"][0]}
        without = {name: median(results["without"], name) for name in results["with"][0]}
        work = "10,000 items: a key that no item has, on top of the key without them"
        self.table.add_limit(work, max(0, took["free key"] - without["free key"]), 50, "µs")
        self.table.add_report("… the first, which makes the tables", f"{took['first key']:.0f} µs")
        self.table.add_limit("… a tab trigger with all that it inserts",
                             max(0, took["trigger"] - without["trigger"]) / 1000, 1)
        # Half of what a key takes up to its pixels without one (see the rows of keys).
        self.table.add_limit("key in a field with 100 mirrors and 20 transformations, more than without",
                             (took["key in field"] - took["key without fields"]) / 1000, 0.75)
        self.table.add_limit("completion in 10 MB, first candidate",
                             took["first candidate"] / 1000, 16)
        self.table.add_limit("… next", took["next candidate"] / 1000, 2)
        self.table.add_limit("… where there is no next one", took["no further candidate"] / 1000, 2)
        self.table.add_limit("select window over 10,000 items, the slowest letter",
                             took["select window, letter"] / 1000, 16)
        self.table.add_report("… until it is open", f"{took['select window opens'] / 1000:.1f} ms")

    def transforming(self):
        lines = make_once(self.folder / "lines-1m.txt", self.write_lines)
        prose = make_once(self.folder / "prose-1.txt", self.write_prose)
        everything = [("selectAll:", None)]
        for work, file, action, command, settings in (
                ("shift right 1,000,000 lines", lines, "shiftRight:", "%>", []),
                ("sort 1,000,000 lines", lines, "sortLines:", "sort", []),
                ("reformat 1 MB of prose", prose, "reformatText:", "normal! gqG", [])):
            outs = {who: str(self.folder / f"transformed-{who}.txt") for who in ("ours", "vim")}
            results = self.run_all({
                "ours": self.batch(action[:-1], everything + [(action, None)], *settings,
                                   "--save-as", outs["ours"], file),
                "vim": [*self.vim, "-c", "set nosol sw=8 noet tw=78 nojs", "-c", "1", "-c",
                        f"silent {command}", "-c", f"w! {outs['vim']}", "-c", "q!", file]})
            if not filecmp.cmp(outs["ours"], outs["vim"], shallow=False):
                raise SystemExit(f"bench/run: vim's {command} does something else")
            for field, name in (("wall", work), ("cpu", "… its user and system time")):
                self.table.add(name, least(results["ours"], field), "vim",
                               least(results["vim"], field), 0.5)

    def write_lines(self, out):
        for n in range(LINES):
            out.write(b"%07d item %06d of a list\n" % (n * 7919 % 999_983, n % 99_991))

    def write_prose(self, out):
        with open(self.workload.log_10, "rb") as file:
            words = [word for word in file.read(3_000_000).split() if word.isalpha()]
        size = 0
        for n in range(0, len(words), 9):
            end = b"\n\n" if n % 180 == 171 else b"\n"
            size += out.write(b" ".join(words[n:n + 9]) + end)
            if size > 1_000_000 and end == b"\n":
                return

    def mixed(self):
        outs = {who: str(self.folder / f"mixed-{who}.txt") for who in ("ours", "vim")}
        keys = '"' + MIXED_OF_VIM.replace("\x1b", r"\<Esc>").replace("\r", r"\<CR>") + '"'
        script = self.folder / "mixed.vim"
        script.write_text(f"set nofixeol nowrapscan\ncall setreg('q', {keys})\n")
        results = self.run_all({
            "ours": self.batch("mixed", MIXED, "--repeat", str(ROUNDS), "--save-as", outs["ours"],
                               self.workload.log_10),
            "vim": [*self.vim, "-S", str(script), "-c", "1", "-c", f"normal {ROUNDS}@q", "-c",
                    f"w! {outs['vim']}", "-c", "q!", self.workload.log_10]})
        if not filecmp.cmp(outs["ours"], outs["vim"], shallow=False):
            raise SystemExit("bench/run: vim's mixed macro does something else")
        work = f"macro with a find and a snippet, {ROUNDS} times in 10 MB"
        for field, name in (("wall", work), ("cpu", "… its user and system time")):
            self.table.add(name, least(results["ours"], field), "vim",
                           least(results["vim"], field), 0.3)
