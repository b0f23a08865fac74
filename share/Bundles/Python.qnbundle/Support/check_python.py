"""What Python, and pyflakes where it is installed, find in a program from standard input."""
import subprocess
import sys

import quirnote


def faults_of(text):
    try:
        # Not as bytes, for the text is in UTF-8, whatever charset a line of it declares.
        compile(text.encode("utf-8", "surrogateescape").decode("utf-8"), "text", "exec", dont_inherit=True)
    except SyntaxError as fault:
        return quirnote.fault(fault.lineno or 1, fault.offset or 1, fault.msg)
    except (ValueError, RecursionError, MemoryError) as fault:
        return quirnote.fault(1, 1, fault or type(fault).__name__)
    done = subprocess.run([sys.executable, "-I", "-m", "pyflakes"], input=text.encode("utf-8"),
                          capture_output=True, cwd="/", check=False)
    if b"No module named" in done.stderr:
        return ""
    lines = (done.stdout + done.stderr).decode("utf-8", "replace").splitlines()
    return "".join(line.replace("<stdin>", quirnote.document_name(), 1) + "\n" for line in lines)


quirnote.report("Check of Python", faults_of(quirnote.read()))
