"""What the programs are measured with: files and scripts, the same at each run."""

import random
from xml.sax.saxutils import escape

from measuring import make_once

WORDS = ("connection accepted from client timeout while reading response header upstream cache "
         "miss for key worker process started with status").split()
MIDDLE = 25_000_000  # a column of the long line


def log_lines(size):
    """Lines of a log, about `size` bytes of ASCII, each about 110 long."""
    dice = random.Random(1)
    written, seconds = 0, 1_700_000_000
    while written < size:
        seconds += dice.randint(0, 3)
        line = "%d.%03d [%s] pid=%d %s %s %s id=%08x\n" % (
            seconds, dice.randint(0, 999), dice.choice(["info", "warn", "debug", "error"]),
            dice.randint(100, 9999), " ".join(dice.choices(WORDS, k=8)), dice.choice(WORDS),
            dice.choice(WORDS), dice.getrandbits(32))
        written += len(line)
        yield line.encode()


def head(path, size):
    with open(path, "rb") as file:
        return file.read(size)


def plist_xml(value):
    if isinstance(value, dict):
        items = (f"<key>{escape(key)}</key>{plist_xml(item)}" for key, item in value.items())
        return f"<dict>{''.join(items)}</dict>"
    if isinstance(value, bool):
        return "<true/>" if value else "<false/>"
    tag = "integer" if isinstance(value, int) else "string"
    return f"<{tag}>{escape(str(value))}</{tag}>"


def bracketed():
    """C that begins with a bracket, whose partner is 20 lines below."""
    block = "\tif (name == NULL) {\n\n\t\treturn call(name, count[1]);\n\t}\n"
    yield ("(" + block * 5 + ")\n").encode()
    for n in range(5000):
        yield f"int function_{n}(char const* name)\n{{\n{block}}}\n".encode()


class Workload:
    def __init__(self, folder):
        self.folder = folder
        folder.mkdir(parents=True, exist_ok=True)
        self.log_100 = make_once(folder / "log-100.txt",
                                 lambda out: out.writelines(log_lines(100_000_000)))
        self.log_10 = self._cut("log-10.txt", 10_000_000)
        self.log_half = self._cut("log-half.txt", 500_000)
        self.line_50 = make_once(
            folder / "line-50.txt",
            lambda out: out.write(head(self.log_100, 50_000_000).replace(b"\n", b" ")))

        self.bracketed = make_once(folder / "bracketed.c", lambda out: out.writelines(bracketed()))
        record = b'{"name":"a name","values":[1,2.5,null,true],"inner":{"key":"value"}},'
        json_line = b"[" + record * (500_000 // len(record)) + b"0]\n"
        self.json_line = make_once(folder / "line.json", lambda out: out.write(json_line))
        self.json_as_text = make_once(folder / "json.txt", lambda out: out.write(json_line))

    def _cut(self, name, size):
        return make_once(self.folder / name, lambda out: out.write(head(self.log_100, size)))

    def macro(self, name, steps):
        """A macro for our batch mode from pairs of selector and argument (None for none)."""
        path = self.folder / f"{name}.plist"
        with open(path, "w") as out:
            out.write('<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0"><array>\n')
            for command, argument in steps:
                value = "" if argument is None else "<key>argument</key>" + plist_xml(argument)
                out.write(f"<dict><key>command</key><string>{command}</string>{value}</dict>\n")
            out.write("</array></plist>\n")
        return str(path)

    def random_places(self, count):
        """Lines and columns from 1 in the log of 10 MB."""
        with open(self.log_10, "rb") as file:
            lengths = [len(line) for line in file.read().split(b"\n")]
        dice = random.Random(2)
        lines = [dice.randrange(len(lengths)) for _ in range(count)]
        return [(line + 1, dice.randint(1, lengths[line] + 1)) for line in lines]

    def insert_macro(self, places):
        steps = []
        for line, column in places:
            steps += [("goToLineNumber:", line), ("goToColumnNumber:", column),
                      ("insertText:", "y")]
        return self.macro("inserts", steps + [("undo:", None)] * len(places))

    def insert_scripts(self, places, each):
        """The same for vim and neovim: each insertion a step of undo, then all are undone, one by
        one or at once. They print the number of bytes left, and how many steps there were."""
        data = self.folder / "places.txt"
        name = "inserts-each" if each else "inserts"
        undo_vim = "for n in range(steps) | silent undo | endfor" if each else "silent undo 0"
        undo_lua = ("for n = 1, steps do vim.cmd('silent undo') end" if each
                    else "vim.cmd('silent undo 0')")
        data.write_text("".join(f"{line} {column}\n" for line, column in places))
        vim = self.folder / f"{name}.vim"
        vim.write_text(f"""
set undolevels=1000000
let s:places = map(readfile('{data}'), 'split(v:val)')
function! s:Run()
  for [line, column] in s:places
    let text = getline(line)
    let &undolevels = &undolevels
    call setline(line, strpart(text, 0, column - 1) . 'y' . strpart(text, column - 1))
  endfor
  let steps = undotree().seq_cur
  {undo_vim}
  verbose echo line2byte(line('$') + 1) - 1 steps
endfunction
call s:Run()
quit!
""")
        lua = self.folder / f"{name}.lua"
        lua.write_text(f"""
vim.o.undolevels = 1000000
for text in io.lines('{data}') do
  local line, column = text:match('(%d+) (%d+)')
  line, column = line - 1, column - 1
  vim.o.undolevels = vim.o.undolevels
  vim.api.nvim_buf_set_text(0, line, column, line, column, {{'y'}})
end
local steps = vim.fn.undotree().seq_cur
{undo_lua}
print(vim.fn.line2byte(vim.fn.line('$') + 1) - 1, steps)
vim.cmd('quit!')
""")
        return str(vim), str(lua)
