"""run.py FILE ARGUMENT...: runs a script, which finds modules here, among Python's own and beside itself. What goes
wrong in it becomes a tool tip."""
import os
import sys


def report_fault(kind, fault, trace):
    if issubclass(kind, (KeyboardInterrupt, BrokenPipeError)):
        os._exit(200)
    sys.stdout.write(f"{os.path.basename(sys.argv[0])}: {kind.__name__}: {fault}"[:2000])
    sys.stdout.flush()
    os._exit(206)


sys.excepthook = report_fault
del sys.argv[0]
sys.path.append(os.path.dirname(sys.argv[0]))
with open(sys.argv[0], "rb") as script:
    exec(compile(script.read(), sys.argv[0], "exec"), {"__name__": "__main__", "__file__": sys.argv[0]})
