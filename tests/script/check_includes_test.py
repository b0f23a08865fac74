"""script/check-includes on small trees made to be right or wrong in one point each."""

import pathlib
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "script/check-includes"
HEADER = "#pragma once\n"

# What stands in the tree of every case: one header a room that others may include.
SOUND = {
    "CMakeLists.txt": "",
    "main.cc": '#include "app/a.h"\n#include "plist/a.h"\n',
    "app/a.h": HEADER + '#include "text/a.h"\n#include <vector>\n',
    "text/a.h": HEADER + '#include "regex/a.h"\n  #  include "platform/a.h"\n',
    "regex/a.h": HEADER,
    "headless/a.h": HEADER,
    "grammar/a.h": HEADER,
    "actions/a.h": HEADER,
    "platform/a.h": HEADER,
    "plist/a.h": HEADER,
    "plist/a.cc": '#include "plist/a.h"\n#include "a_lexer.hpp"\n#include "aTokenTypes.hpp"\n',
    "plist/a.g": '#include "plist/a.h"\nclass a_lexer extends Lexer;\n'
                 'options { exportVocab = a; }\n',
    "desktop/a.h": HEADER + '#include <QWidget>\n#include <QtGui/QFont>\n'
                   '#include "headless/a.h"\n',
}

# Name, files put over the sound ones, what is reported.
CASES = [
    ("sound", {}, []),
    ("upwards", {"text/a.cc": '\n#include "app/a.h"\n'},
     ["src/text/a.cc:2: app/ is above text/: app/a.h"]),
    ("to the top", {"app/a.cc": '#include "desktop/a.h"\n'},
     ["src/app/a.cc:1: desktop/ stands beside the house: desktop/a.h"]),
    ("a window that knows the text", {"desktop/b.cc": '#include "text/a.h"\n'},
     ["src/desktop/b.cc:1: desktop/ may not include text/: text/a.h"]),
    ("a circle", {"text/b.h": HEADER + '#include "text/c.h"\n',
                  "text/c.h": HEADER + '#include "text/b.h"\n'},
     ["src/text/b.h:1: a circle of text/b.h, text/c.h"]),
    ("a circle of types", {"text/b.h": HEADER + '#include "text/c.h"\nnamespace text {\nclass d;\n}\n',
                           "text/c.h": HEADER + "namespace text {\nclass c {};\n}\n",
                           "text/d.h": HEADER + "namespace text {\nclass c;\nclass b;\n"
                                                "class d : e {\n};\n}\n",
                           "text/views/b.h": HEADER + "namespace text {\nstruct b {\n};\n}\n"
                                                      '#include "text/b.h"\n'},
     ["src/text/b.h:1: a circle of text/b.h, text/d.h, text/views/b.h"]),
    ("one idea in two headers", {"regex/nfa.h": HEADER + "namespace regex {\nclass visit_nfa;\n}\n",
                                 "regex/visit_nfa.h": HEADER + '#include "regex/nfa.h"\n'
                                 "namespace regex {\nclass visit_nfa {\n};\n}\n"},
     []),
    ("in no namespace", {"text/b.h": HEADER + "/// A b { of c.\nnamespace text {\nint f() {\n"
                                              "  return 1;\n}\n}\nclass WynB {\n  int x;\n};\n"
                                              "class b;\ninline int g() {\n  return 1;\n}\n",
                         "desktop/b.h": HEADER + "class b;\n"},
     ["src/text/b.h:11: in no namespace: class b",
      "src/text/b.h:12: in no namespace: inline int g()"]),
    ("between neighbours", {"regex/a.cc": '#include "headless/a.h"\n',
                            "actions/a.cc": '#include "grammar/a.h"\n'},
     ["src/actions/a.cc:1: grammar/ is on the same floor as actions/: grammar/a.h",
      "src/regex/a.cc:1: headless/ is on the same floor as regex/: headless/a.h"]),
    ("in a grammar", {"plist/b.g": 'header {\n#include "platform/a.h"\n}\n'},
     ["src/plist/b.g:2: platform/ is above plist/: platform/a.h"]),
    ("another room's parser", {"text/a.cc": '#include "a_lexer.hpp"\n'},
     ['src/text/a.cc:1: an include names the folder under src/ and the file: "a_lexer.hpp"']),
    ("Qt in the core", {"app/a.cc": "#include <QString>\n", "main.cc": "#include <QtCore/QFile>\n",
                        "text/a.cc": "#include <qglobal.h>\n"},
     ["src/app/a.cc:1: Qt is for desktop/ alone: QString",
      "src/main.cc:1: Qt is for desktop/ alone: QtCore/QFile",
      "src/text/a.cc:1: Qt is for desktop/ alone: qglobal.h"]),
    ("not from src", {"text/a.cc": '#include "a.h"\n#include "../plist/a.h"\n'},
     ['src/text/a.cc:1: an include names the folder under src/ and the file: "a.h"',
      'src/text/a.cc:2: an include names the folder under src/ and the file: "../plist/a.h"']),
    ("no such file", {"text/a.cc": '#include "plist/b.h"\n'},
     ['src/text/a.cc:1: no such file: "plist/b.h"']),
    ("up into a room of the folder", {"text/views/a.h": HEADER + '#include "text/a.h"\n',
                                      "text/b.cc": '#include "text/views/a.h"\n'},
     ["src/text/b.cc:1: text/views/ is above text/: text/views/a.h"]),
    ("a folder that is no room", {"path/deep/a.cc": '#include "path/b.h"\n', "path/b.h": HEADER},
     []),
    ("crowded", {"text/long.cc": "\n" * 5990, "text/views/long.cc": "\n" * 5990,
                 "desktop/long.cc": "\n" * 6001,
                 **{f"path/{n}.cc": "" for n in range(61)}},
     ["src/path:1: 61 files with 0 lines, more than 60 or 6000: divide it into rooms"]),
    ("unknown room", {"util/a.txt": ""},
     ["src/util/a.txt:1: not in a folder that the list of floors knows"]),
    ("stray file", {"a.cc": ""},
     ["src/a.cc:1: not in a folder that the list of floors knows"]),
    ("no guard", {"text/b.h": "namespace text {}\n"},
     ["src/text/b.h:1: a header says #pragma once"]),
]


class CheckIncludes(unittest.TestCase):
    def test_trees(self):
        for name, files, faults in CASES:
            with self.subTest(name), tempfile.TemporaryDirectory() as root:
                for path, text in {**SOUND, **files}.items():
                    file = pathlib.Path(root, "src", path)
                    file.parent.mkdir(parents=True, exist_ok=True)
                    file.write_text(text)
                run = subprocess.run([SCRIPT, root], capture_output=True, text=True)
                self.assertEqual(run.stdout.splitlines(), faults)
                self.assertEqual(run.returncode, 1 if faults else 0, run.stderr)

    def test_no_tree_is_no_success(self):
        with tempfile.TemporaryDirectory() as root:
            self.assertEqual(subprocess.run([SCRIPT, root], capture_output=True).returncode, 2)


unittest.main()
