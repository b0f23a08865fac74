"""Runs programs and measures them: by the kernel's accounts, or their windows from outside."""

import json
import os
import shutil
import statistics
import subprocess
import threading
import time
from dataclasses import dataclass
from pathlib import Path


@dataclass(frozen=True)
class Usage:
    """What a program that ran to its end took."""

    wall: float  # ms
    cpu: float  # ms, user and system
    peak: float  # MB resident
    output: str


class Sandbox:
    """A home of their own for all the programs, a display without window manager, and a bus."""

    def __init__(self, folder):
        self.folder = folder
        self.children = []
        self.env = {k: v for k, v in os.environ.items() if not k.startswith(("XDG_", "QT_", "KDE"))}
        self.env.pop("WAYLAND_DISPLAY", None)
        self.env.update(HOME=str(folder / "home"), LC_ALL="C.UTF-8", NO_AT_BRIDGE="1")
        for name in ("config", "data", "state", "cache", "runtime"):
            self.env[f"XDG_{name.upper()}_{'DIR' if name == 'runtime' else 'HOME'}"] = str(
                folder / name)
        self.reset()

    def reset(self):
        """Forgets what programs that were killed left behind to be asked about at the next start."""
        for name in ("home", "config", "data", "state", "cache", "runtime"):
            (self.folder / name).mkdir(mode=0o700, parents=True, exist_ok=True)
        shutil.rmtree(self.folder / "state" / "Quirnote", ignore_errors=True)
        for swap in self.folder.glob(".*.*sw*"):
            swap.unlink()

    def __enter__(self):
        self._start_bus()
        self._start_display()
        return self

    def __exit__(self, *_):
        for child in self.children:
            child.terminate()
            child.wait()

    def _start(self, command, **more):
        child = subprocess.Popen(command, env=self.env, stderr=subprocess.DEVNULL, **more)
        self.children.append(child)
        return child

    def _start_bus(self):
        if shutil.which("dbus-daemon"):
            bus = self._start(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                              stdout=subprocess.PIPE, text=True)
            self.env["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()

    def _start_display(self):
        read_end, write_end = os.pipe()
        self._start(["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x1024x24",
                     "-nolisten", "tcp"], pass_fds=[write_end], stdout=subprocess.DEVNULL)
        os.close(write_end)
        with os.fdopen(read_end) as answer:
            number = answer.readline().strip()
        if not number:
            raise SystemExit("bench/run: Xvfb does not start")
        self.env["DISPLAY"] = ":" + number

    def run(self, command, timeout=120):
        """Runs a program without a window to its end."""
        env = {k: v for k, v in self.env.items() if k != "DISPLAY"}
        started = time.perf_counter()
        child = subprocess.Popen(command, env=env, stdin=subprocess.DEVNULL,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        watchdog = threading.Timer(timeout, child.kill)
        watchdog.start()
        output = child.stdout.read()
        _, status, usage = os.wait4(child.pid, 0)
        watchdog.cancel()
        child.returncode = os.waitstatus_to_exitcode(status)
        wall = time.perf_counter() - started
        if child.returncode != 0:
            raise SystemExit(f"bench/run: {command[:9]} ended with {child.returncode}: {output[:500]}")
        return Usage(wall * 1000, (usage.ru_utime + usage.ru_stime) * 1000,
                     usage.ru_maxrss * 1024 / 1e6, output)

    def probe(self, probe, *what, timeout=120):
        """Runs window_probe: its JSON, or None when it gives up."""
        self.reset()
        result = subprocess.run(["timeout", str(timeout), probe, *what], env=self.env,
                                stdin=subprocess.DEVNULL, capture_output=True, text=True)
        lines = [line for line in result.stdout.splitlines() if line.startswith("{")]
        return json.loads(lines[-1]) if result.returncode == 0 and lines else None


def interleaved(repetitions, tasks):
    """Calls each task of a dictionary in turn, again and again, after a first round that only
    warms up; a dictionary of lists. So a load from elsewhere falls on all alike."""
    results = {name: [] for name in tasks}
    for round_ in range(repetitions + 1):
        for name, task in tasks.items():
            result = task()
            if round_ > 0 and result is not None:
                results[name].append(result)
    return results


def median(samples, field):
    """The median of one field (attribute or key); None when nothing was measured."""
    values = [s[field] if isinstance(s, dict) else getattr(s, field) for s in samples or []]
    return statistics.median(values) if values else None


def make_once(path: Path, write):
    """Has `write` make a file under another name first, so that a part is not taken for it."""
    if not path.exists():
        part = path.with_suffix(".part")
        with open(part, "wb") as out:
            write(out)
        part.rename(path)
    return str(path)
