"""Rows of bench/run about commands: texts that go through them, and windows with their output."""

import filecmp
import json
import shlex
import subprocess
from pathlib import Path

from measuring import interleaved, make_once, median
from workload import plist_xml

HUGE = 500_000_000
PAGES, KEYS = 6, 40
F12 = "\uf70f"


class Commands:
    def __init__(self, benchmark, ours, vim, nvim, probe, bin_folder):
        self.table, self.workload = benchmark.table, benchmark.workload
        self.sandbox, self.repeat = benchmark.sandbox, benchmark.repeat
        self.ours, self.vim, self.nvim, self.probe, self.bin = ours, vim, nvim, probe, bin_folder
        self.folder = self.workload.folder

    def commands(self):
        # `cat` leaves the text as it is, `tr` changes all of it, so that undo holds it twice.
        for size, file in (("10 MB", self.workload.log_10), ("100 MB", self.workload.log_100)):
            for name, script in (("cat", "cat"), ("tr", "tr a-z A-Z")):
                self.filter(f"filter {size} through {name}", f"{name}-{size[:-3]}", script, file)
        self.true()
        self.pages()
        self.flood()

    def filter(self, work, name, script, file):
        macro = self.workload.macro(name, [("executeCommandWithOptions:", {
            "command": script, "input": "document", "output": "replaceDocument"})])
        commands = {"ours": [self.ours, "--batch", "--strict", "--macro", macro, file],
                    "vim": [*self.vim, "-c", f"%!{script}", "-c", "q!", file],
                    "nvim": [*self.nvim, "-c", f"silent %!{script}", "-c", "q!", file]}
        self.check(name, script, macro, file)
        results = interleaved(self.repeat, {who: (lambda c=command: self.sandbox.run(c))
                                            for who, command in commands.items()})
        if script != "cat":
            walls, peaks = ({who: median(samples, field) for who, samples in results.items()} for field in ("wall", "peak"))
            self.table.add_report(work, ", ".join(f"{who} {walls[who]:.0f} ms, {peaks[who]:.0f} MB" for who in walls))
            return
        for peer in ("vim", "nvim"):
            self.table.add(work, median(results["ours"], "wall"), peer, median(results[peer], "wall"), 0.6)
            self.table.add("… its peak memory", median(results["ours"], "peak"), peer,
                           median(results[peer], "peak"), 1, "MB")

    def check(self, name, script, macro, file):
        """The result is that of the program alone, and one step of undo brings the text back."""
        made, expected, undone = (str(self.folder / f"{name}-{what}.txt") for what in ("made", "expected", "undone"))
        subprocess.run(f"{script} <{shlex.quote(file)} >{shlex.quote(expected)}", shell=True, check=True)
        undo = self.workload.macro("undo", [("undo:", None)])
        self.sandbox.run([self.ours, "--batch", "--strict", "--macro", macro, "--save-as", made, file])
        if script != "cat":
            self.sandbox.run([self.ours, "--batch", "--strict", "--macro", macro, "--macro", undo, "--save-as", undone, file])
        if not filecmp.cmp(made, expected, shallow=False) or (
                script != "cat" and not filecmp.cmp(undone, file, shallow=False)):
            raise SystemExit(f"bench/run: {script} was not applied")
        for each in (made, expected, undone):
            Path(each).unlink(missing_ok=True)

    def true(self):
        huge = make_once(self.folder / "log-500.txt", self.write_huge)
        results = interleaved(self.repeat, {
            "ours": lambda: self.json_of([self.bin / "command_timing", huge]),
            "bare": lambda: self.json_of([self.bin / "bare_spawn"])})
        took = {who: min(sample["ms"] for sample in samples) for who, samples in results.items()}
        self.table.add("the command true beside 500 MB, until its result is in", took["ours"],
                       "bare posix_spawn", took["bare"], 2)

    def write_huge(self, out):
        with open(self.workload.log_100, "rb") as file:
            block = file.read()
        for _ in range(-(-HUGE // len(block))):
            out.write(block)

    def json_of(self, command):
        done = subprocess.run(command, env=self.sandbox.env, capture_output=True, text=True, timeout=280, check=True)
        return json.loads(done.stdout)

    def home_with(self, name, script):
        """A home in which F12 shows what the script prints, and no question comes meanwhile."""
        home = self.folder / f"home-{name}"
        bundle = home / "Quirnote" / "Bundles" / "Bench.qnbundle"
        (bundle / "Commands").mkdir(parents=True, exist_ok=True)
        for path, value in ((bundle / "info.plist", {"name": "Bench", "uuid": "BENCH"}),
                            (bundle / "Commands" / "Page.qnCommand",
                             {"name": "Page", "uuid": "BENCH-PAGE", "keyEquivalent": F12, "input": "none",
                              "output": "showAsHTML", "command": script}),
                            (home / "Quirnote" / "Defaults.plist", {"WynCommandOutputLimit": 1 << 20})):
            path.write_text(f'<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0">{plist_xml(value)}</plist>\n')
        return ["env", f"XDG_DATA_HOME={home}", f"XDG_CONFIG_HOME={home}", self.ours, self.workload.log_half]

    def pages(self):
        count = self.folder / "pages"
        script = (f"n=$(cat {shlex.quote(str(count))} 2>/dev/null || echo 0); echo $((n + 1)) >{shlex.quote(str(count))}\n"
                  "colors=(red lime); echo \"<!DOCTYPE html><body style='background:${colors[n % 2]}'>\"")
        command = self.home_with("pages", script)

        def once():
            count.unlink(missing_ok=True)
            return self.sandbox.probe(self.probe, "pages", str(PAGES), *command)
        results = interleaved(self.repeat, {"ours": once})["ours"]
        first = median(results, "first")
        self.table.add_report("first window with a page, from the key", f"{first:.0f} ms" if first else "no result")
        self.table.add_limit("… the next ones, from the key until the output shows", median(results, "median"), 150)

    def flood(self):
        number = self.folder / "flood-number"
        command = self.home_with("flood", f"echo $$ >{shlex.quote(str(number))}; echo '<pre>'; "
                                          "exec yes 'a line of a command that prints for ever, and is not short'")
        results = interleaved(min(self.repeat, 3), {"ours": lambda: self.sandbox.probe(
            self.probe, "flood", str(number), str(KEYS), *command)})["ours"]
        self.table.add_limit("key press to pixels while a command floods a page, the slowest", median(results, "max"), 100)
        self.table.add_report("… the slowest without a flood, of the same window",
                              f"{median(results, 'quiet'):.1f} ms" if results else "no result")
        self.table.add_limit("… from Stop Task until it is gone", median(results, "stopped"), 1000)
