# Texts before and after actions, with carets and selections drawn in them.
here=$(dirname "${BASH_SOURCE[0]}")
"$here/run_cases" "$1" "$here"/cases/*.txt
