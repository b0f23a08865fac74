"""Text with its scopes drawn into it: the form of the files of expected scopes.

A scope stands round its text as `⟨SCOPE text⟩`, nested like the scopes themselves and over as many
lines as it lasts. Scopes end in the name of their language, as `comment.line.c` in `source.c`;
that ending is left out, and a scope without it is marked with `!` instead. The text alone, which
is the input, is what remains without the marks.
"""
import re

OPEN, CLOSE = "⟨", "⟩"
ROOT = re.compile(r"(source|text)\.")
RUN = re.compile(r"(\d+)\t(.*)")


def plain(marked):
    """The text without the marks."""
    return re.sub(f"{OPEN}\\S+ |{CLOSE}", "", marked)


def runs_of(printed, lines):
    """What `--print scopes` says of each of the lines: its runs of scopes as [column, scopes]."""
    rest = iter(printed.split("\n"))
    following = next(rest, "")
    for line in lines:
        if following != line:
            raise ValueError(f"expected the line {line!r}, not {following!r}")
        runs = []
        while (following := next(rest, None)) is not None and (run := RUN.fullmatch(following)):
            # A line of the text that looks like a run comes after that of column 0.
            if runs and int(run[1]) <= runs[-1][0]:
                break
            runs.append((int(run[1]), run[2].split()))
        yield runs


def shown(scope, outer):
    """A scope without its language's name; `outer` are those round it, outermost first."""
    if ROOT.match(scope):
        return scope
    root = next((s for s in reversed(outer) if ROOT.match(s)), "")
    front, _, last = scope.rpartition(".")
    return front if last in root.split(".")[1:] else scope + "!"


def by_units(line, begin, end):
    units = line.encode("utf-16-le", "surrogatepass")
    return units[2 * begin:2 * end].decode("utf-16-le", "surrogatepass")


def marked(text, printed):
    """The text with the scopes that `--print scopes` gave for it."""
    lines = text.split("\n")
    out, stack = [], []

    def common(scopes):
        same = 0
        while same < min(len(stack), len(scopes)) and stack[same] == scopes[same]:
            same += 1
        return same

    def close_down_to(depth):
        out.append(CLOSE * (len(stack) - depth))
        del stack[depth:]

    all_runs = list(runs_of(printed, lines))
    for number, (line, runs) in enumerate(zip(lines, all_runs)):
        for i, (column, scopes) in enumerate(runs):
            close_down_to(common(scopes))
            for scope in scopes[len(stack):]:
                out.append(f"{OPEN}{shown(scope, stack)} ")
                stack.append(scope)
            following_column = runs[i + 1][0] if i + 1 < len(runs) else 2 * len(line)
            out.append(by_units(line, column, following_column))
        following = all_runs[number + 1] if number + 1 < len(lines) else None
        close_down_to(common(following[0][1]) if following else 0)
        out.append("\n" if following else "")
    return "".join(out)
