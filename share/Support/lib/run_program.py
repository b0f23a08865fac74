"""run_program.py TITLE PROGRAM ARGUMENT...: a page of HTML with what the program prints, as it comes."""
import codecs
import os
import subprocess
import sys

import quirnote

title, *command = sys.argv[1:]
quirnote.write(quirnote.page_start(title) + "<pre>")
try:
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT)
except (OSError, ValueError) as fault:
    quirnote.write(quirnote.escape(f"{command[0]}: {fault}") + "</pre>\n</body></html>\n")
    sys.exit(0)
decoder = codecs.getincrementaldecoder("utf-8")("replace")
while block := os.read(process.stdout.fileno(), 1 << 16):
    quirnote.write(quirnote.escape(decoder.decode(block)))
quirnote.write(quirnote.escape(decoder.decode(b"", True)))
status = process.wait()
what = f"Ended by signal {-status}." if status < 0 else f"Exit status {status}."
quirnote.write(f'</pre>\n<p{"" if status == 0 else " class=fault"}>{what}</p>\n</body></html>\n')
