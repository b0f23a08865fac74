"""What is wrong with YAML from standard input: read as events alone, so that nothing is built or expanded."""
import shutil
import subprocess
import sys

import quirnote

SECONDS = 20
READ = """
import sys
try:
    import yaml
except ImportError:
    sys.exit(3)
try:
    for event in yaml.parse(sys.stdin.buffer.read().decode("utf-8", "replace")):
        pass
except yaml.MarkedYAMLError as fault:
    mark = fault.problem_mark or fault.context_mark
    said = ", ".join(filter(None, (fault.context, fault.problem)))
    print(f"{mark.line + 1}:{mark.column + 1}: error: {said}")
except (yaml.YAMLError, RecursionError) as fault:
    print(f"1:1: error: {' '.join(str(fault).split())}")
"""


def run(*command):
    """Outside of the document's folder, so that no module and no settings come from there."""
    try:
        done = subprocess.run(command, input=text, capture_output=True, cwd="/", check=False, timeout=SECONDS)
    except subprocess.TimeoutExpired:
        quirnote.tip(f"This takes longer than {SECONDS} seconds to check.")
    return done.returncode, done.stdout.decode("utf-8", "replace")


text = quirnote.read().encode("utf-8", "surrogateescape")
status, found = run(sys.executable, "-I", "-X", "utf8", "-c", READ)
linter = shutil.which("yamllint")
if status == 3 and not linter:
    quirnote.tip("Python has no module “yaml”. On Debian and Ubuntu: sudo apt install python3-yaml")
if linter and not found:
    found = run(linter, "--format", "parsable", "-")[1].replace("stdin:", "")
quirnote.report("Check of YAML", "".join(f"{quirnote.document_name()}:{line}\n" for line in found.splitlines()))
