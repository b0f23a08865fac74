"""What the selected word of make's language is, or the one at the caret."""
import re

import quirnote

WORDS = """
$(abspath NAMES): absolute names, without . and .. ; links stay as they are
$(addprefix PREFIX,NAMES): each name with that before it
$(addsuffix SUFFIX,NAMES): each name with that after it
$(and CONDITIONS): the last of them, or nothing as soon as one is empty
$(basename NAMES): each name without its ending
$(call VARIABLE,PARAMETERS): the variable's value, with $(1), $(2) ... as the parameters
$(dir NAMES): the folder of each name, with its slash
$(error TEXT): stops make with this message
$(eval TEXT): reads the text as a part of the makefile
$(file OP NAME,TEXT): writes the text into the file (>), appends it (>>) or reads it (<)
$(filter PATTERNS,TEXT): the words that match one of the patterns
$(filter-out PATTERNS,TEXT): the words that match none of the patterns
$(findstring FIND,IN): FIND if it stands in IN, else nothing
$(firstword NAMES): the first of the words
$(flavor VARIABLE): undefined, recursive or simple
$(foreach VAR,LIST,TEXT): the text for each word of the list, with the variable as that word
$(guile CODE): what GNU Guile makes of the code
$(if CONDITION,THEN,ELSE): the second if the first isn't empty, else the third
$(info TEXT): prints the text
$(intcmp LHS,RHS,LESS,EQUAL,GREATER): one of the last three by how the numbers compare
$(join LIST1,LIST2): the words of both lists, joined one by one
$(lastword NAMES): the last of the words
$(let VARS,LIST,TEXT): the text with the variables as the words of the list
$(notdir NAMES): each name without its folder
$(or CONDITIONS): the first of them that isn't empty
$(origin VARIABLE): where it comes from: undefined, default, environment, file, command line, override, automatic
$(patsubst PATTERN,REPLACEMENT,TEXT): the words of TEXT, those that match PATTERN replaced; % is any part
$(realpath NAMES): absolute names of files that are there, without links
$(shell COMMAND): what the command prints, line ends as blanks
$(sort LIST): the words in their order, each once
$(strip TEXT): the text with single blanks, and none at its ends
$(subst FROM,TO,TEXT): the text with FROM replaced by TO wherever it stands
$(suffix NAMES): the ending of each name, with its dot
$(value VARIABLE): its value as it is written
$(warning TEXT): prints this message with file and line
$(wildcard PATTERN): the files that are there and match
$(word N,TEXT): the word of that number, from 1
$(wordlist FIRST,LAST,TEXT): the words from one number to another
$(words TEXT): how many words there are
$@: the target of the rule
$<: the first prerequisite
$^: all prerequisites, each once
$+: all prerequisites, as often as they stand there
$?: the prerequisites that are newer than the target
$*: what % in the pattern of the rule stands for
$|: the prerequisites that only have to be there first
$%: the member of an archive that is the target
.DEFAULT: its recipe is that of targets without a rule
.DEFAULT_GOAL: the target that is made when none is asked for
.DELETE_ON_ERROR: the target's file goes when its recipe fails
.EXPORT_ALL_VARIABLES: all variables are in the environment of recipes
.INTERMEDIATE: its prerequisites are deleted when they were only steps on the way
.NOTPARALLEL: recipes run one after the other
.ONESHELL: a recipe is one script, not one for each line
.PHONY: its prerequisites are names of tasks, not of files
.POSIX: make keeps to POSIX where that differs
.PRECIOUS: its prerequisites stay when make is stopped
.RECIPEPREFIX: the character that begins lines of recipes instead of a tab
.SECONDARY: its prerequisites are intermediate, and never deleted
.SECONDEXPANSION: prerequisites are expanded a second time, where $@ is known
.SILENT: recipes are not printed
.SUFFIXES: the endings that old suffix rules know
CURDIR: the folder that make runs in
MAKE: the program make itself; lines with $(MAKE) are run with -n, too
MAKECMDGOALS: the targets that were asked for
MAKEFILE_LIST: the makefiles that were read, the present one last
MAKEFLAGS: the options that make was called with
SHELL: the program that runs recipes, /bin/sh unless it is set
VPATH: folders in which prerequisites are looked for
define: begins a variable of several lines, up to endef
export: the variable is in the environment of recipes
include: reads another makefile; -include one that need not be there
override: the variable counts, whatever the command line says
private: the variable of a target is not that of its prerequisites
unexport: the variable is not in the environment of recipes
vpath: vpath PATTERN FOLDERS: where files that match are looked for
"""
KNOWN = {}
for line in WORDS.strip().split("\n"):
    for name in re.findall(r"^\$\(([\w-]+) |^(\$[^\w(]|[\w.]+):", line)[0]:
        KNOWN[name] = line

line, at = quirnote.caret_in_line()
asked = quirnote.variable("SELECTED_TEXT").strip() or next(
    (m[0] for m in re.finditer(r"[\w.-]+", line) if m.start() <= at <= m.end()), "")
known = KNOWN.get(asked) or KNOWN.get(asked.strip("$(){}"))
quirnote.tip(known if known and asked else "make has no function, variable or target of this name.")
