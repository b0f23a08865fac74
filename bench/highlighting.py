"""Rows of bench/run about languages: how soon text has its colours, and what that costs."""

import json
import math
import plistlib
import shutil
import subprocess

from corpora import corpus, screen_corpus
from measuring import interleaved, median

# Scope, the other library's definition, and MB; the library takes a minute for 5 MB of Markdown.
LANGUAGES = {"C": ("source.c", "C", 5), "C++": ("source.c++", "C++", 5),
             "Python": ("source.python", "Python", 5), "JSON": ("source.json", "JSON", 5),
             "HTML": ("text.html.basic", "HTML", 5), "Markdown": ("text.html.markdown", "Markdown", 1)}
SCOPES, RULES, PREFERENCES = 1000, 300, 2000
FUNCTIONS = 10_000
TWO_FRAMES = 1000 / 30  # ms


class Highlighting:
    def __init__(self, benchmark, ours, gvim, probe, bin_folder):
        self.table, self.sandbox = benchmark.table, benchmark.sandbox
        self.workload, self.repeat = benchmark.workload, benchmark.repeat
        self.folder = self.workload.folder
        self.ours, self.gvim, self.probe, self.bin = ours, gvim, probe, bin_folder

    def probe_all(self, commands):
        tasks = {name: (lambda c=command: self.sandbox.probe(self.probe, *map(str, c)))
                 for name, command in commands.items()}
        return interleaved(self.repeat, tasks)

    def coloured(self):
        small, large = screen_corpus(self.folder, 500_000), screen_corpus(self.folder, 5_000_000)
        commands = {"ours": ["coloured", self.ours, small], "large": ["coloured", self.ours, large],
                    "gvim": ["coloured", *self.gvim, "-c", "syntax on", small],
                    "kwrite": ["coloured", "kwrite", small]}
        results = self.probe_all({name: command for name, command in commands.items()
                                  if name in ("ours", "large") or shutil.which(command[1])})
        work = "0.5 MB of C in a window until coloured text shows"
        for peer, limit in (("gvim", 0.6), ("kwrite", 1)):
            if peer in results:
                self.table.add(work, median(results["ours"], "ms"), peer,
                               median(results[peer], "ms"), limit)
            else:
                self.table.add_missing(work, peer)
        self.table.add_limit("5 MB of C: colours after the first text",
                             median(results["large"], "after_text"), 50)

    def working(self):
        """Keys while the tokenizer works: typing at the top has it begin anew each time."""
        c = screen_corpus(self.folder, 5_000_000)
        plain = screen_corpus(self.folder, 5_000_000, "nolang")
        for key, count, name in (("x", 60, "key press"), ("Next", 10, "Page Down")):
            results = self.probe_all({"c": ["busy", key, count, self.ours, c],
                                      "plain": ["busy", key, count, self.ours, plain]})
            self.table.add(f"{name} to pixels while 5 MB of C are tokenised",
                           median(results["c"], "median"), "ours, no language",
                           median(results["plain"], "median"), 1.2, strict=True)
            self.table.add("… 99th percentile", median(results["c"], "p99"), "ours, no language",
                           median(results["plain"], "p99"), 1.2, strict=True)
            self.table.add_report("… share of a processor that it used meanwhile",
                                  f"{median(results['c'], 'busy'):.2f}")

    def comment(self):
        file = screen_corpus(self.folder, 5_000_000)
        results = self.probe_all({what: [what, self.ours, file]
                                  for what in ("comment", "comment-far")})
        work = "a comment opened over 5 MB, until the screen is right"
        self.table.add_limit(work, median(results["comment"], "ms"), TWO_FRAMES)
        self.table.add_limit("… with a jump to the far end", median(results["comment-far"], "ms"),
                             TWO_FRAMES)

    def folds(self):
        """Pages of folded functions beside pages as full without folds, and the text not folded."""
        file, lines = self.folder / "functions.c", self.folder / "declarations.c"
        heads = [f"static int function_{n * 7919}(char const *name_{n * 104729}, int count)"
                 for n in range(FUNCTIONS)]
        body = " {\n\tif (!count) return 0;  // nothing\n\treturn count + 1;\n}\n"
        file.write_text("".join(head + body for head in heads))
        lines.write_text("".join(head + ";\n" for head in heads))
        config = self.folder / "config-folded"
        (config / "Quirnote").mkdir(parents=True, exist_ok=True)
        (config / "Quirnote" / "Defaults.plist").write_bytes(
            plistlib.dumps({"WynTextViewOpenFilesFoldedEnabled": True}))
        folded = ["env", f"XDG_CONFIG_HOME={config}", self.ours]
        state = json.loads(self.sandbox.run([*folded, "--batch", "--print", "state", file]).output)
        if state["viewLines"] != FUNCTIONS + 1:
            raise SystemExit("bench/run: the functions are not folded")
        results = self.probe_all({"folded": ["busy", "Next", 40, *folded, file],
                                  "declarations": ["busy", "Next", 40, self.ours, lines],
                                  "the same open": ["busy", "Next", 40, self.ours, file]})
        for peer in ("declarations", "the same open"):
            self.table.add(f"Page Down to pixels, {FUNCTIONS} functions folded",
                           median(results["folded"], "median"), peer,
                           median(results[peer], "median"), 1.2, strict=True)

    def styles(self):
        data = self.folder / "style-data"
        self.make_style_bundle(data / "Quirnote" / "Bundles" / "Many.qnbundle")
        env = {**self.sandbox.env, "XDG_DATA_HOME": str(data),
               "XDG_CACHE_HOME": str(data / "cache")}
        result = subprocess.run([self.bin / "style_bench", str(SCOPES), str(RULES)], env=env,
                                capture_output=True, text=True, timeout=280, check=True)
        figures = json.loads(result.stdout)
        work = f"style of {SCOPES} scope paths, {RULES} rules, {PREFERENCES} preferences"
        self.table.add_report(f"{work}: first look-up, each", f"{figures['first']:.1f} µs")
        self.table.add_report("… second look-up, each", f"{figures['second']:.3f} µs")

    @staticmethod
    def make_style_bundle(folder):
        def write(name, value):
            path = folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(plistlib.dumps(value))
        if folder.exists():
            return
        rules = [{"name": f"keyword.kind{n % 10}.group{n % 100}.word{n}", "match": rf"\bw{n}\b"}
                 for n in range(SCOPES)]
        write("Syntaxes/Many.qnLanguage", {
            "name": "Many", "scopeName": "source.many", "patterns": rules,
            "uuid": "5D6E0B5C-6A3A-4C63-8A0C-3B6C3C1C0001"})
        for n in range(PREFERENCES):
            write(f"Preferences/P{n}.qnPreferences", {
                "name": f"P{n}", "uuid": f"5D6E0B5C-6A3A-4C63-8A0C-{n:012X}",
                "scope": f"source.many keyword.kind{n % 10}.group{n % 100} - keyword.kind.none{n}",
                "settings": {"showInSymbolList": n % 2, "increaseIndentPattern": f"^{n}"}})
        write("info.plist", {"name": "Many", "uuid": "5D6E0B5C-6A3A-4C63-8A0C-3B6C3C1C0002"})

    def tokenizing(self):
        program = self.bin / "tokenizing"
        if not program.exists():
            self.table.add_missing("tokenising", "KSyntaxHighlighting")
            return
        arguments = []
        for language, (scope, definition, size) in LANGUAGES.items():
            arguments += [scope, definition, corpus(self.folder, language, size * 1_000_000)]
        result = subprocess.run([program, str(min(self.repeat, 3)), *arguments], timeout=600,
                                capture_output=True, text=True, check=True)
        figures = [json.loads(line) for line in result.stdout.splitlines()]
        for language, of in zip(LANGUAGES, figures):
            self.table.add(f"tokenise {of['bytes'] / 1e6:.1f} MB of {language}", of["ours"] * 1000,
                           "KSyntaxHighlighting", of["peer"] * 1000, 2)
        mean = math.prod(of["ours"] / of["peer"] for of in figures) ** (1 / len(figures))
        self.table.add("… geometric mean of the ratios", mean, "KSyntaxHighlighting", 1, 1, "")
        self.one_line(program)
        # A unit takes two bytes in memory.
        self.table.add("memory of the scopes of 5 MB of C", figures[0]["memory"] / 1e6, "the text's",
                       2 * figures[0]["bytes"] / 1e6, 2, "MB")

    def one_line(self, program):
        many = corpus(self.folder, "JSON", 1_000_000)
        one = self.folder / "corpus-1-line.json"
        one.write_bytes(open(many, "rb").read().replace(b"\n", b" "))
        result = subprocess.run([program, "3", "source.json", "none", one, "source.json", "none",
                                 many], timeout=280, capture_output=True, text=True, check=True)
        figures = [json.loads(line)["ours"] * 1000 for line in result.stdout.splitlines()]
        self.table.add("tokenise 1 MB of JSON in one line", figures[0], "the same in many",
                       figures[1], 2)
