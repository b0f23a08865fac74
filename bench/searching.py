"""Rows of bench/run about finding, replacing, macros and soft wrap. The least of the repetitions
counts: what other load adds is never negative."""

import filecmp
import json
import os
import subprocess

from measuring import interleaved, make_once

HITS = 1_000_000
STEPS = 10_000
FILES = 1000
FILES_EACH = 100  # vim started for each file takes long
UNDO_PAIRS = 5
TEN_STEPS = [("moveToBeginningOfLine:", None), ("insertText:", "> "), ("moveRight:", None),
             ("moveRight:", None), ("insertText:", ","), ("moveToEndOfLine:", None),
             ("deleteBackward:", None), ("insertText:", ";"), ("moveDown:", None),
             ("moveToBeginningOfLine:", None)]
TEN_STEPS_OF_VIM = "0i> \x1blla,\x1b$xA;\x1bj0"


def least(samples, field):
    values = [getattr(s, field) for s in samples or []]
    return min(values) if values else None


def replace_steps(find, replacement, pattern, more=()):
    options = {"action": "replaceAll", "replaceAllScope": "document", "findString": find,
               "replaceString": replacement, "regularExpression": pattern}
    return [("findWithOptions:", options), *((step, None) for step in more)]


class Searching:
    def __init__(self, benchmark, ours, vim, nvim, bench_program):
        self.table, self.workload = benchmark.table, benchmark.workload
        self.sandbox, self.repeat = benchmark.sandbox, benchmark.repeat
        self.ours, self.vim, self.nvim = ours, vim, nvim
        self.bench_program = bench_program
        self.folder = self.workload.folder

    def run_all(self, commands):
        return interleaved(self.repeat, {name: (lambda c=command: self.sandbox.run(c))
                                         for name, command in commands.items()})

    def batch(self, name, steps, *more):
        return [self.ours, "--batch", "--macro", self.workload.macro(name, steps), *more]

    def replace(self):
        file = make_once(self.folder / "hits-50.txt", self.write_hits)
        for name, find, replacement, pattern, command, limit in (
                ("literal", "needle", "thread", False, r"%s/needle/thread/g", 0.2),
                ("pattern", r"needle([0-9]+)", "$1pin", True, r"%s/\vneedle([0-9]+)/\1pin/g", 0.3)):
            outs = {who: str(self.folder / f"replaced-{who}.txt")
                    for who in ("ours", "vim", "nvim")}
            vim = ["-c", command, "-c", f"w! {outs['vim']}", "-c", "q!", file]
            nvim = ["-c", command, "-c", f"w! {outs['nvim']}", "-c", "q!", file]
            steps = replace_steps(find, replacement, pattern)
            # One alone is lost in the noise of loading the file.
            undone = replace_steps(find, replacement, pattern,
                                   ["undo:"] + ["redo:", "undo:"] * UNDO_PAIRS)
            results = self.run_all({
                "ours": self.batch(f"replace-{name}", steps, "--save-as", outs["ours"], file),
                "vim": [*self.vim, *vim], "nvim": [*self.nvim, *nvim],
                "open": self.batch("nothing", [], file),
                "do": self.batch(f"do-{name}", steps, file),
                "undo": self.batch(f"undo-{name}", undone, file)})
            for who in ("vim", "nvim"):
                if not filecmp.cmp(outs["ours"], outs[who], shallow=False):
                    raise SystemExit(f"bench/run: {who} has replaced otherwise")
            work = f"replace {HITS} hits in 50 MB, {name}, load and save"
            self.table.add(work, least(results["ours"], "wall"), "vim",
                           least(results["vim"], "wall"), limit)
            self.table.add("… its user and system time", least(results["ours"], "cpu"), "vim",
                           least(results["vim"], "cpu"), limit)
            self.table.add("… its peak memory", least(results["ours"], "peak"), "nvim",
                           least(results["nvim"], "peak"), 1, "MB")
            cost = {key: least(results[key], "cpu") for key in ("open", "do", "undo")}
            undo = (cost["undo"] - cost["do"]) / (1 + 2 * UNDO_PAIRS)
            self.table.add(f"… undo or redo, mean of {1 + 2 * UNDO_PAIRS}, user and system time",
                           undo, "doing it", cost["do"] - cost["open"], 1)

    @staticmethod
    def write_hits(out):
        for n in range(HITS):
            out.write(b"%07d connection accepted, needle%06d, ok %05d\n" %
                      (n, n % 999_983, n % 99_991))

    def find(self):
        """By find_bench: everything but drawing, from the first line to the last of 100 MB."""
        result = subprocess.run(
            [self.bench_program, "--benchmark_filter=find|alone|in_memory",
             "--benchmark_min_time=0.05", f"--benchmark_repetitions={self.repeat}",
             "--benchmark_enable_random_interleaving=true", "--benchmark_format=json"],
            capture_output=True, text=True, timeout=280, check=True)
        took = {}
        for run in json.loads(result.stdout)["benchmarks"]:
            if run["run_type"] == "iteration":
                took[run["run_name"]] = min(run["cpu_time"], took.get(run["run_name"], 1e9))
        for name, floor, limit in (
                ("literal", "in_memory", 2), ("ignoring_case", "in_memory", 4),
                ("rare_pattern", "oniguruma_alone/rare_pattern", 1.2),
                ("common_pattern", "oniguruma_alone/common_pattern", 1.2)):
            peer = "a search in memory" if floor == "in_memory" else "Oniguruma alone"
            self.table.add(f"find next in 100 MB, {name.replace('_', ' ')}", took[f"find/{name}"],
                           peer, took[floor], limit)

    def macro(self):
        script = self.folder / "ten-steps.vim"
        script.write_text(f"set nofixeol\ncall setreg('q', {self.quoted(TEN_STEPS_OF_VIM)})\n")
        outs = {who: str(self.folder / f"macro-{who}.txt") for who in ("ours", "vim")}
        results = self.run_all({
            "ours": self.batch("ten-steps", TEN_STEPS, "--repeat", str(STEPS), "--save-as",
                               outs["ours"], self.workload.log_10),
            "written out": self.batch("ten-steps-often", TEN_STEPS * STEPS, "--save-as",
                                      outs["ours"] + ".2", self.workload.log_10),
            "vim": [*self.vim, "-S", str(script), "-c", "1", "-c", f"normal {STEPS}@q",
                    "-c", f"w! {outs['vim']}", "-c", "q!", self.workload.log_10]})
        for out in (outs["vim"], outs["ours"] + ".2"):
            if not filecmp.cmp(outs["ours"], out, shallow=False):
                raise SystemExit("bench/run: vim's macro does something else")
        work = f"macro of ten steps, {STEPS} times in 10 MB"
        self.table.add(work, least(results["ours"], "wall"), "vim", least(results["vim"], "wall"),
                       0.3)
        self.table.add("… its user and system time", least(results["ours"], "cpu"),
                       "vim", least(results["vim"], "cpu"), 0.3)
        work = f"… its {len(TEN_STEPS) * STEPS} steps read from a property list"
        self.table.add(work, least(results["written out"], "wall"), "vim",
                       least(results["vim"], "wall"), 0.3)
        self.over_files(script)

    def over_files(self, script):
        text = open(self.workload.log_half, "rb").read()[:4000]
        files = {}
        for who in ("ours", "vim", "each"):
            folder = self.folder / f"files-{who}"
            folder.mkdir(exist_ok=True)
            files[who] = [str(folder / f"{n}.txt") for n in range(FILES)]
            for name in files[who]:
                with open(name, "wb") as out:
                    out.write(text)
        results = self.run_all({
            "ours": self.batch("ten-steps", TEN_STEPS, "--save", *files["ours"]),
            "vim": [*self.vim, "-S", str(script), "-c",
                    "silent argdo execute '1normal @q' | update", "-c", "qa!",
                    *files["vim"]],
            "vim for each": ["sh", "-c", 'for f; do ' + " ".join(self.vim) + f" -S {script} -c "
                             "'1normal @q' -c update -c 'q!' \"$f\"; done", "sh",
                             *files["each"][:FILES_EACH]]})
        if not all(filecmp.cmp(a, b, shallow=False) for a, b in zip(files["ours"], files["vim"])):
            raise SystemExit("bench/run: vim's macro does something else to many files")
        work = f"macro of ten steps over each of {FILES} files, saved"
        self.table.add(work, least(results["ours"], "wall"), "vim", least(results["vim"], "wall"),
                       0.1)
        self.table.add("… its user and system time", least(results["ours"], "cpu"), "vim",
                       least(results["vim"], "cpu"), 0.1)
        self.table.add("… one run", least(results["ours"], "wall"), "vim started for each file",
                       least(results["vim for each"], "wall") * FILES / FILES_EACH, 0.1)

    @staticmethod
    def quoted(keys):
        return '"' + keys.replace("\x1b", r"\<Esc>") + '"'

    def wrap(self):
        file = self.workload.log_100
        results = self.run_all({
            "nothing": [self.ours, "--batch"],
            "open": self.batch("nothing", [], file),
            "wrap": self.batch("wrap", [("toggleSoftWrap:", None)], file)})
        took = {name: least(samples, "cpu") for name, samples in results.items()}
        self.table.add("soft wrap turned on for 100 MB, user and system time",
                       took["wrap"] - took["open"], "opening it", took["open"] - took["nothing"], 1)
