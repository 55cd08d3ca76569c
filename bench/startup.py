#!/usr/bin/python3
"""Start-up of the program as a user sees it, against the floor of a bare Qt window.

    xvfb-run -a -s "-screen 0 1280x800x24 -noreset" dbus-run-session bench/startup.py build [RUNS] [ROWS,...]

Each round starts, one after the other, the bare window (build/bench/bare_window), a bare Qt window with
what the start window shows (bare_window --start-window), the program with no timesheet and the program
with a timesheet of each size in ROWS (default 10000,100000; "" for none); the order turns
from round to round, so a slow minute of the machine falls on every subject alike. It times exec to the
window mapped on the X server (watched as MapNotify on the root window: nothing inside the programs is
involved) and reads the resident memory 3 s later. Prints the median and the spread of each subject and
its ratio to the bare window. RUNS defaults to 15.
"""
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from Xlib import X, display

SETTLE_SECONDS = 3


def make_timesheet(cli, path, rows):
    """Rows as a year of real use looks: a few hundred dates, a few dozen jobs, some notes, one user."""
    operations = ["Design", "Meeting", "Entwicklung", "Review"]
    clients = ["Acme", "Bäckerei Groß", "Northwind Traders"]
    sheet = {"starthrs": "09", "startmin": "30", "rows": []}
    for i in range(rows):
        sheet["rows"].append({
            "date": f"{1 + (i // 40) % 28}/{1 + (i // 1120) % 12}/26",
            "job": f"J{1000 + i % 37}",
            "project": f"Project number {i % 37}",
            "hours": f"{i % 9:02d}",
            "minutes": f"{i % 60:02d}",
            "operation": operations[i % 4],
            "client": clients[i % 3],
            "run": "**" if i % 5 == 0 else "",
            "note": f"Call with the client about the draft, changes agreed – {i}" if i % 3 == 0 else "",
            "user": "Default User",
            "budget": "",
        })
    subprocess.run([cli, "write", path], input=json.dumps(sheet).encode(), check=True)
    # The texts as the program holds them (two bytes a character), the yardstick of its memory.
    text = sum(len(value) for row in sheet["rows"] for value in row.values()) * 2
    return text


def settings_folder():
    """A first start with no settings, but with an operations file, so no welcome comes first."""
    config = tempfile.mkdtemp()
    os.makedirs(config + "/Veltrick")
    with open(config + "/Veltrick/VK8 Opps List", "wb") as ops:
        ops.write(b"\x00\x00\x00\x00")
    return config


def resident_mib(pid):
    with open(f"/proc/{pid}/status") as status:
        for line in status:
            if line.startswith("VmRSS:"):
                return int(line.split()[1]) / 1024
    return 0.0


def one_run(command, title):
    """Milliseconds from exec to the map of the window called `title` (any window when None), and MiB
    resident once the program has settled."""
    d = display.Display()
    root = d.screen().root
    root.change_attributes(event_mask=X.SubstructureNotifyMask)
    d.sync()
    env = dict(os.environ, XDG_CONFIG_HOME=settings_folder())
    t0 = time.monotonic()
    proc = subprocess.Popen(command, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    mapped = None
    deadline = t0 + 20
    while time.monotonic() < deadline and mapped is None:
        if d.pending_events() == 0:
            time.sleep(0.0002)
            continue
        event = d.next_event()
        if event.type != X.MapNotify:
            continue
        now = time.monotonic()
        try:
            name = event.window.get_wm_name()
        except Exception:  # the window went before its name was read
            continue
        if title is None or name == title:
            mapped = (now - t0) * 1000
    time.sleep(SETTLE_SECONDS)
    rss = resident_mib(proc.pid)
    proc.terminate()
    proc.wait()
    d.close()
    shutil.rmtree(env["XDG_CONFIG_HOME"], ignore_errors=True)
    return mapped, rss


def main():
    build = sys.argv[1] if len(sys.argv) > 1 else "build"
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 15
    sizes = [int(n) for n in sys.argv[3].split(",") if n] if len(sys.argv) > 3 else [10000, 100000]
    program = os.path.join(build, "src", "veltrick")
    folder = tempfile.mkdtemp()
    bare = os.path.join(build, "bench", "bare_window")
    subjects = [("bare Qt window", [bare], "Bare window", 0),
                ("bare start window", [bare, "--start-window"], "Bare window", 0),
                ("Veltrick, no timesheet", [program], None, 0)]
    for rows in sizes:
        path = os.path.join(folder, f"rows{rows}.vlk")
        text = make_timesheet(os.path.join(build, "src", "cli", "veltrick-cli"), path, rows)
        subjects.append((f"Veltrick, {rows:,} rows", [program, path], os.path.basename(path), text))
    results = {name: [] for name, *_ in subjects}
    for round_number in range(runs):
        turn = round_number % len(subjects)
        for name, command, title, _ in subjects[turn:] + subjects[:turn]:
            results[name].append(one_run(command, title))
    shutil.rmtree(folder, ignore_errors=True)

    bus = "yes" if os.environ.get("DBUS_SESSION_BUS_ADDRESS") else "no"
    print(f"session bus: {bus}; rounds: {runs}, interleaved; memory read {SETTLE_SECONDS} s after the map")
    print(f"{'':28}{'map median':>12}{'min':>8}{'max':>8}{'x bare':>8}{'+ bare':>9}{'resident':>10}{'text':>9}")
    floor = None
    for name, _, _, text in subjects:
        maps = [m for m, _ in results[name] if m is not None]
        if len(maps) < len(results[name]):
            print(f"{name}: {len(results[name]) - len(maps)} runs never mapped their window")
        if not maps:
            continue
        median = statistics.median(maps)
        floor = floor or median
        rss = statistics.median(r for _, r in results[name])
        text_column = f"{text / 2**20:.1f} MiB" if text else ""
        print(f"{name:28}{median:9.1f} ms{min(maps):8.1f}{max(maps):8.1f}{median / floor:8.2f}"
              f"{median - floor:6.0f} ms{rss:6.1f} MiB{text_column:>9}")


if __name__ == "__main__":
    main()
