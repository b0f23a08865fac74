# Read by bash before the text of each command (BASH_ENV): functions alone, nothing is run.
# docs/commands.md describes them. Names and texts are arguments and input, never code.

# What a command starts gets a bash without these functions.
unset BASH_ENV

# Each ends the command; its output, after what the arguments say, goes there. Not in a pipeline
# or in $(...), which are processes of their own.
qn_end() {
  local code=$1
  shift
  if (( $# )); then printf '%s' "$*"; fi
  exit "$code"
}
qn_discard() { exit 200; }
qn_replace_selection() { qn_end 201 "$@"; }
qn_replace_document() { qn_end 202 "$@"; }
qn_insert_after() { qn_end 203 "$@"; }
qn_insert_snippet() { qn_end 204 "$@"; }
qn_show_html() { qn_end 205 "$@"; }
qn_show_tip() { qn_end 206 "$@"; }
qn_new_document() { qn_end 207 "$@"; }

# qn_require PROGRAM PACKAGE: a tool tip and the end where the program is missing.
qn_require() {
  type -P -- "$1" >/dev/null ||
    qn_show_tip "“$1” is not installed. On Debian and Ubuntu: sudo apt install $2"
}

# qn_python FILE ARGUMENT...: a script that can "import quirnote". Neither the folder of the document
# nor variables of Python's decide what it imports.
qn_python() {
  qn_require python3 python3
  python3 -BEsS -W ignore -X utf8 "$QN_SUPPORT_PATH/lib/run.py" "$@"
}

# The text that a command is about: what is selected, else the word at the caret.
qn_word() { printf '%s' "${QN_SELECTED_TEXT-${QN_CURRENT_WORD-}}"; }

# A folder of its own in $qn_temporary, which goes when the command ends.
qn_temporary_folder() {
  qn_temporary=$(mktemp -d "${TMPDIR:-/tmp}/quirnote.XXXXXXXX") ||
    qn_show_tip "No temporary folder could be made in “${TMPDIR:-/tmp}”."
  trap 'rm -rf -- "$qn_temporary"' EXIT
}

# qn_document_file ENDING: $qn_file is the document's file as an absolute name, or, for a document that
# has none, a temporary one with the text from standard input.
qn_document_file() {
  qn_file=${QN_FILEPATH-}
  if [[ $qn_file == /* && -f $qn_file ]]; then return; fi
  qn_temporary_folder
  qn_file=$qn_temporary/untitled.$1
  cat >"$qn_file"
}

# qn_run TITLE PROGRAM ARGUMENT...: runs the program and writes a page of HTML meanwhile, with its
# output as it comes. It reads nothing.
qn_run() { qn_python "$QN_SUPPORT_PATH/lib/run_program.py" "$@"; }

# qn_format PROGRAM ARGUMENT...: prints what the program makes of the text on standard input; where it
# fails, ends with what it says to that as a tool tip.
qn_format() {
  qn_temporary_folder
  "$@" >"$qn_temporary/made" 2>"$qn_temporary/said" || {
    local said
    said=$(<"$qn_temporary/said")
    qn_show_tip "${said:-“$1” has failed.}"
  }
  cat -- "$qn_temporary/made"
}

# PROGRAM... 2>&1 | qn_report TITLE [NAME]...; qn_end_as
# What a checker has found, "FILE:LINE:COLUMN: MESSAGE" in lines, as a page; a tool tip where that is
# nothing. NAME is what it calls the text that it has read from a pipe.
qn_report() { qn_python "$QN_SUPPORT_PATH/lib/report.py" "$@"; }

# Ends the command with the status of the last process of the pipeline before.
qn_end_as() { exit "${PIPESTATUS[-1]}"; }
