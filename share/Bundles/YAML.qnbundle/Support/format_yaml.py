"""Lays YAML from standard input out: collections are indented by their depth, one blank is after a dash, and blanks at
the ends of lines go. White space alone changes: what comes out is read as the same, or nothing comes out."""
import bisect
import os
import re
import sys

sys.path.append(os.environ["QN_SUPPORT_PATH"] + "/lib")
import quirnote  # noqa: E402

try:
    import yaml
except ImportError:
    quirnote.tip("Python has no module “yaml”. On Debian and Ubuntu: sudo apt install python3-yaml")


def indentation(line):
    return len(line) - len(line.lstrip(" "))


def is_comment(line):
    return line.lstrip(" ").startswith("#")


class Layout:
    """Where each line of the text begins, and what is between a dash and what comes after it."""

    def __init__(self, text, step):
        self.lines, self.step = text.split("\n"), step
        self.starts = [0]
        for line in self.lines:
            self.starts.append(self.starts[-1] + len(line) + 1)
        self.blocks = []  # [column, new column] of the collections round a token
        self.columns = {}  # new columns of lines; None for those that stay
        self.literal = set()  # lines whose blanks are text
        self.within = set()  # lines of a text, where blank ones count
        self.gaps = {}  # what is cut to one blank: columns after dashes, by line
        self.opened, self.dash, self.flow = None, None, []
        for token in yaml.scan(text):
            self.take(token)
        self.place_comments()

    def place(self, index):
        line = bisect.bisect_right(self.starts, index) - 1
        return line, index - self.starts[line]

    def inside(self):
        """The column of what is in the innermost collection."""
        return self.blocks[-1][1] + self.step if self.blocks else 0

    def take(self, token):
        line, column = self.place(token.start_mark.index)
        is_first = line not in self.columns
        begins = isinstance(token, (yaml.BlockMappingStartToken, yaml.BlockSequenceStartToken))
        dash = self.dash if self.dash and self.dash[0] == line else None
        if dash and not begins:
            if column > dash[1] + 1:
                self.gaps.setdefault(line, []).append((dash[1] + 1, column))
            self.dash = None
        if begins:
            self.blocks.append([column, dash[2] + 2 if dash else self.inside()])
        elif isinstance(token, yaml.BlockEndToken):
            self.blocks.pop()
        elif isinstance(token, (yaml.BlockEntryToken, yaml.KeyToken, yaml.ValueToken)) and not self.flow:
            self.note(line, is_first, self.blocks[-1][1] if self.blocks else 0)
            is_mark = not isinstance(token, yaml.KeyToken) or self.lines[line][column:column + 1] == "?"
            starts_line = is_first or isinstance(token, yaml.BlockEntryToken)
            if is_mark and starts_line:
                self.dash = (line, column, self.blocks[-1][1] if self.blocks else 0)
            return
        elif isinstance(token, (yaml.DocumentStartToken, yaml.DocumentEndToken, yaml.DirectiveToken)):
            self.note(line, is_first, 0)
        elif not isinstance(token, (yaml.StreamStartToken, yaml.StreamEndToken)):
            self.note(line, is_first, self.of_flow(line) if self.flow else self.inside())
            if isinstance(token, yaml.ScalarToken):
                self.scalar(token, line)
        if isinstance(token, (yaml.FlowMappingStartToken, yaml.FlowSequenceStartToken)):
            self.flow.append(line)
        elif isinstance(token, (yaml.FlowMappingEndToken, yaml.FlowSequenceEndToken)):
            self.flow.pop()

    def note(self, line, is_first, column):
        if is_first:
            self.columns[line] = column

    def of_flow(self, line):
        """Lines of brackets keep their place to the first of them."""
        first = self.flow[0]
        moved = self.columns[first] - indentation(self.lines[first])
        return max(indentation(self.lines[line]) + moved, self.blocks[-1][1] + 1 if self.blocks else 0)

    def scalar(self, token, line):
        last, column = self.place(token.end_mark.index)
        if token.style not in ("|", ">"):
            self.within |= set(range(line + 1, last))
            for each in range(line + 1, last + 1):
                self.columns[each] = self.of_flow(each) if self.flow else max(self.inside(), 1 if self.blocks else 0)
            return
        content = range(line + 1, last + (1 if column else 0))
        self.literal |= set(content)
        held = [indentation(self.lines[each]) for each in content if self.lines[each].strip(" ")]
        head = self.lines[line][self.place(token.start_mark.index)[1]:]
        if re.match(r"[|>][+-]?[1-9]", head):
            moved = self.blocks[-1][1] - self.blocks[-1][0] if self.blocks else 0
        else:
            moved = self.inside() - held[0] if held and self.blocks else 0
        for each in content:
            self.columns[each] = max(indentation(self.lines[each]) + moved, 0)

    def place_comments(self):
        """As the next line, or as another one that stood in the same column."""
        following, known = None, {}
        ahead = [None] * len(self.lines)
        for line in range(len(self.lines) - 1, -1, -1):
            if line in self.columns and line not in self.literal:
                following = line
            ahead[line] = following
        for line, text in enumerate(self.lines):
            if line in self.columns:
                if line in self.literal:
                    known = {}  # deeper it would be text
                else:
                    known[indentation(text)] = self.columns[line]
            elif is_comment(text):
                column, after = indentation(text), ahead[line]
                is_alike = after is not None and indentation(self.lines[after]) == column
                as_next = self.columns[after] if after is not None else 0
                self.columns[line] = as_next if is_alike else known.get(column, as_next)

    def result(self):
        made, was_blank = [], True
        for line, text in enumerate(self.lines):
            if line in self.literal:
                rest = text.lstrip(" ")
                made.append(" " * self.columns[line] + rest if rest else text[:self.columns[line]])
                was_blank = False
                continue
            for first, last in reversed(self.gaps.get(line, [])):
                text = text[:first] + " " + text[last:]
            text = text.strip(" \t")
            if text or not was_blank or line in self.within:
                made.append(" " * self.columns.get(line, 0) + text if text else "")
            was_blank = not text
        while made and not made[-1] and len(self.lines) - 2 not in self.literal:
            made.pop()
        return "\n".join(made) + ("" if made and not made[-1] else "\n")


def meaning(text):
    """All but places."""
    return [[getattr(event, name, None) for name in ("anchor", "tag", "implicit", "value", "style", "flow_style", "explicit")]
            + [type(event)] for event in yaml.parse(text)]


def main():
    text = quirnote.read()
    size = int(quirnote.variable("TAB_SIZE", "2"))
    step = size if quirnote.variable("SOFT_TABS") == "YES" and 2 <= size <= 8 else 2
    try:
        made = Layout(text, step).result() if text.strip() else text
        is_same = "".join(made.split()) == "".join(text.split()) and meaning(made) == meaning(text)
    except yaml.MarkedYAMLError as fault:
        mark = fault.problem_mark or fault.context_mark
        quirnote.tip(f"Line {mark.line + 1}, column {mark.column + 1}: {fault.problem or fault.context}.")
    except (yaml.YAMLError, RecursionError) as fault:
        quirnote.tip(" ".join(str(fault).split()))
    if not is_same:
        quirnote.tip("This text can't be laid out without changing what it means.")
    quirnote.write(made)


main()
