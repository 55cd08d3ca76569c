#!/usr/bin/python3
"""Start-up of the program as a user sees it: time from exec to the first window mapped on the X
server, and resident memory 3 s later. Run inside an X server, e.g.

    xvfb-run -a -s "-screen 0 1280x800x24 -noreset" bench/startup.py build/src/veltrick
    xvfb-run -a -s "... -noreset" dbus-run-session bench/startup.py build/src/veltrick
    xvfb-run -a -s "... -noreset" bench/startup.py build/src/veltrick 5 big.vlk

It watches the root window for MapNotify, so nothing inside the program is involved in the timing.
"""
import os
import statistics
import subprocess
import sys
import tempfile
import time

from Xlib import X, display


def one_run(program, document):
    d = display.Display()
    root = d.screen().root
    root.change_attributes(event_mask=X.SubstructureNotifyMask)
    d.sync()
    env = dict(os.environ)
    env["XDG_CONFIG_HOME"] = tempfile.mkdtemp()  # a first start, no settings
    # An operations file makes it a normal start rather than the first-run welcome.
    os.makedirs(env["XDG_CONFIG_HOME"] + "/Veltrick")
    open(env["XDG_CONFIG_HOME"] + "/Veltrick/VK8 Opps List", "wb").write(b"\x00\x00\x00\x00")
    t0 = time.monotonic()
    proc = subprocess.Popen([program] + ([document] if document else []), env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    mapped = None
    deadline = t0 + 10
    while time.monotonic() < deadline and mapped is None:
        if d.pending_events() == 0:
            time.sleep(0.0005)
            continue
        ev = d.next_event()
        if ev.type == X.MapNotify:
            # With a timesheet, the window that counts is the one titled with its file name.
            if not document or ev.window.get_wm_name() == os.path.basename(document):
                mapped = time.monotonic() - t0
    time.sleep(3)
    rss = 0
    with open(f"/proc/{proc.pid}/status") as status:
        for line in status:
            if line.startswith("VmRSS:"):
                rss = int(line.split()[1]) / 1024
    proc.terminate()
    proc.wait()
    d.close()
    return mapped, rss


def main():
    program = sys.argv[1]
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    document = os.path.abspath(sys.argv[3]) if len(sys.argv) > 3 else None
    results = [one_run(program, document) for _ in range(runs)]
    maps = [m * 1000 for m, _ in results if m is not None]
    rss = [r for _, r in results]
    bus = "yes" if os.environ.get("DBUS_SESSION_BUS_ADDRESS") else "no"
    print(f"session bus: {bus}; runs: {runs}; timesheet: {document or 'none'}")
    print(f"exec to first window mapped: median {statistics.median(maps):.1f} ms, max {max(maps):.1f} ms")
    print(f"resident 3 s later: median {statistics.median(rss):.1f} MiB, max {max(rss):.1f} MiB")


if __name__ == "__main__":
    main()
