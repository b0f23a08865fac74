"""Reads the editor's window, which shows access_test.sh's file, as a screen reader does.

Sends keys by xdotool, and waits for each thing that must come. Exits with 1 if one doesn't.
"""
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

events = []
PATIENCE = 20  # seconds


def told(event):
    """The event as one line: its type, who sends it, and what."""
    try:
        name = event.source.get_role_name() + " " + event.source.get_name()
    except GLib.Error:
        name = "nobody"
    text = event.any_data if isinstance(event.any_data, str) else ""
    events.append(f"{event.type} [{name}] {event.detail1} {text!r}")


def wait(what, condition):
    """The condition's first true value."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            if value := condition():
                return value
        except GLib.Error:
            pass  # what is asked for has gone, or is not there yet
        time.sleep(0.02)
    print("\n".join(events), file=sys.stderr)
    sys.exit(f"access_reader: waited for {what}")


def wait_event(part):
    wait(part, lambda: any(part in event for event in events))
    events.clear()


def keys(*names):
    subprocess.run(["xdotool", "key", "--delay", "15", "--", *names], check=True)


def parts(top):
    yield top
    for index in range(top.get_child_count()):
        child = top.get_child_at_index(index)
        if child is not None and child.get_role_name() != "menu bar":
            yield from parts(child)


def find(role, name=""):
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        for each in parts(desktop.get_child_at_index(index)):
            if each.get_role_name() == role and each.get_name().startswith(name):
                return each
    return None


def has(part, state):
    return part.get_state_set().contains(state)


listener = Atspi.EventListener.new(told)
for kind in ("object:text-changed", "object:text-caret-moved", "object:text-selection-changed",
             "object:state-changed:focused", "object:state-changed:showing"):
    listener.register(kind)

text = wait("the text", lambda: find("text", "Text"))
wait("the focus", lambda: has(text, Atspi.StateType.FOCUSED))
for state in (Atspi.StateType.EDITABLE, Atspi.StateType.MULTI_LINE, Atspi.StateType.SHOWING):
    wait(state.value_nick, lambda: has(text, state))
whole = "int main() {\n\treturn 1; // x\n}\n"
wait("the whole text", lambda: Atspi.Text.get_text(text, 0, -1) == whole)


def expect(what, got, expected):
    if got != expected:
        sys.exit(f"access_reader: {what}: {got!r} instead of {expected!r}")


def part_at(offset, boundary):
    return Atspi.Text.get_text_at_offset(text, offset, boundary).content


boundary = Atspi.TextBoundaryType
expect("characters", Atspi.Text.get_character_count(text), len(whole))
expect("character", part_at(4, boundary.CHAR), "m")
expect("word", part_at(15, boundary.WORD_START), "return ")
expect("line", part_at(15, boundary.LINE_START), "\treturn 1; // x\n")
expect("the last line", part_at(len(whole), boundary.LINE_START), "")
cell = Atspi.Text.get_character_extents(text, 15, Atspi.CoordType.SCREEN)
expect("the place of a character",
       Atspi.Text.get_offset_at_point(text, cell.x + 1, cell.y + 1, Atspi.CoordType.SCREEN), 15)
# The language is known a moment after the start, and then comments have a colour of their own.
wait("the colour of a comment",
     lambda: Atspi.Text.get_attribute_run(text, 25, False)[0]["fg-color"]
     != Atspi.Text.get_attribute_run(text, 0, False)[0]["fg-color"])

keys("a")
wait_event("text-changed:insert [text Text] 0 'a'")
keys("End")
wait_event("caret-moved [text Text] 13")
keys("BackSpace")
wait_event("text-changed:delete [text Text] 12 '{'")
keys("shift+Home")
wait_event("text-selection-changed [text Text]")
wait("the selection", lambda: Atspi.Text.get_n_selections(text) == 1)
chosen = Atspi.Text.get_selection(text, 0)
expect("selection", (chosen.start_offset, chosen.end_offset), (0, 12))

# What the program is told, it does, and as one step for undo.
Atspi.Text.set_caret_offset(text, 4)
wait_event("caret-moved [text Text] 4")
wait("no selection", lambda: Atspi.Text.get_n_selections(text) == 0)
Atspi.EditableText.insert_text(text, 0, "x\ny", 3)
wait_event("text-changed:insert [text Text] 0 'x\\ny'")
Atspi.EditableText.delete_text(text, 0, 2)
wait_event("text-changed:delete [text Text] 0 'x\\n'")
keys("ctrl+z")
wait_event("text-changed:insert [text Text] 0 'x\\n'")

# What is found, and what is not.
keys("ctrl+f")
wait_event("focused [text Find] 1")
keys("q", "q")
wait_event("showing [notification No matches] 1")
keys("Return")
wait_event("showing [notification Not found] 1")
keys("Escape")
wait_event("focused [text Text] 1")

# From part to part of the status bar.
keys("F6")
wait_event("focused [push button Line")
wait("the status bar", lambda: has(find("push button", "Line"), Atspi.StateType.FOCUSED))
keys("End")
wait_event("focused [push button INS] 1")
keys("Escape")
wait_event("focused [text Text] 1")
keys("Insert")
wait_event("showing [notification OVR] 1")
