"""Static objects of the floors up to documents/ that are made at their first use must never be
destroyed: an end by exit(), as Qt makes one when the display is lost, saves texts after them.
Run as exit_time_test.py OBJECT..."""
import subprocess
import sys

faulty = []
for path in sys.argv[1:]:
    if not path.endswith(".o") or "/antlr2/" in path:  # ANTLR's are made before main()
        continue
    symbols = subprocess.run(["nm", path], check=True, capture_output=True, text=True).stdout
    registers_destructor = "__cxa_atexit" in symbols
    has_local_static = any(line.split()[-1].startswith("_ZGV") for line in symbols.splitlines())
    if registers_destructor and has_local_static:
        faulty.append(path)
for path in faulty:
    print(f"{path}: a static object in a function has a destructor; write "
          "`static auto& name = *new type;`")
sys.exit(1 if faulty else 0)
