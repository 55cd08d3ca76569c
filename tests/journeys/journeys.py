#!/usr/bin/env python3
"""Journeys: the built program on a desktop of its own, driven with keys and clicks as a user drives it,
its results read where a user reads them.

journeys.py BUILD_DIR NAME [--wrap "valgrind ..."] [--keep]
Runs the journey NAME (see JOURNEYS); exits 0 when it went as a user expects, 1 with the reason when not.
Screenshots go to BUILD_DIR/journeys/NAME-*.png.
"""
import argparse
import datetime
import json
import os
import shlex
import struct
import subprocess
import sys
import threading
import time
import traceback

from desktop import PREFS, Desktop, JourneyFailed, fast_clock, row, today, wait_for

JOURNEYS = {}


def journey(function):
    JOURNEYS[function.__name__] = function
    return function


def check(condition, message):
    if not condition:
        raise JourneyFailed(message)


class PrefsWrites:
    """Counts the writes of the preferences file from now on (each is a rename over it)."""

    def __init__(self, d):
        self.log = os.path.join(d.work, "prefs-writes-%d" % time.time_ns())
        self.out = open(self.log, "w")
        self.watch = subprocess.Popen(["inotifywait", "-m", "-q", "-e", "moved_to,close_write", "--format", "%f",
                                       d.config], stdout=self.out, stderr=subprocess.DEVNULL)
        time.sleep(0.3)  # the watch is set

    def count(self):
        time.sleep(0.3)
        self.watch.terminate()
        self.watch.wait()
        self.out.close()
        with open(self.log) as lines:
            return sum(1 for line in lines if line.strip() == PREFS)


def preset_jobs(d):
    """The preset jobs file: job, project, budget and closed hours of each."""
    path = os.path.join(d.config, "VK8JobsList")
    if not os.path.exists(path):
        return []
    data = open(path, "rb").read()
    (count,), at, jobs = struct.unpack(">i", data[:4]), 4, []
    for _ in range(count):
        fields = []
        for _ in range(5):
            length = data[at]
            fields.append(data[at + 1:at + 1 + length].decode())
            at += 1 + length
        jobs.append(fields[:4])
    return jobs


def sheet_of(d, rows, name="sheet.vlk"):
    return d.write_sheet(name, {"starthrs": "", "startmin": "", "rows": rows})


def open_sheet(d, path):
    d.start(path)
    window = d.window(os.path.splitext(os.path.basename(path))[0] + r".*")
    d.focus(window)
    return window


def quit_cleanly(d, way, window):
    """Quit by `way` from `window`: the program ends once, writing its settings at most twice."""
    writes = PrefsWrites(d)
    d.focus(window)
    d.key(*way)
    check(d.ended() == 0, "the program ended with an error")
    count = writes.count()
    check(1 <= count <= 2, "the settings were written %d times on the way out" % count)


def save_preferences(d, prefs):
    """Save Preferences, the only way out of that window."""
    d.focus(prefs)
    x, y, width, height = d.geometry(prefs)
    d.click(width - 60, height - 22, window=prefs)
    d.gone("Veltrick - Preferences")


@journey
def quit(d):
    """Quit from every state: the start window by its key, its menu and its close button; the timesheet
    window stopped and running; with the preset window open; with a modal window open, which keeps the
    program until it is closed."""
    for way in (["ctrl+q"], ["alt+f", "Up", "Return"], ["alt+F4"]):
        d.start()
        quit_cleanly(d, way, d.window("Veltrick"))
    path = sheet_of(d, [row(today(), "J1", 30, project="Quit")])
    for running in (False, True):
        window = open_sheet(d, path)
        if running:
            d.key("alt+c", "Return")  # Control > Start
            wait_for("the job to run", lambda: d.sheet(path)["rows"][0]["run"] == "*")
        quit_cleanly(d, ["ctrl+q"], window)
        check(d.sheet(path)["rows"][0]["run"] == "", "the job still runs in the file after the quit")
    window = open_sheet(d, path)
    d.key("ctrl+b")
    d.window("Veltrick - Preset Jobs")
    quit_cleanly(d, ["ctrl+q"], window)
    window = open_sheet(d, path)
    d.key("ctrl+comma")
    prefs = d.window("Veltrick - Preferences")
    d.key("ctrl+q")
    time.sleep(1)
    d.alive()
    check(d.windows("Veltrick - Preferences"), "the modal window vanished")
    d.screenshot("quit-modal")
    save_preferences(d, prefs)
    quit_cleanly(d, ["ctrl+q"], window)


@journey
def presets(d):
    """The preset window as a user fills it: typing lands in the field typed in, Return adds and changes,
    a budget brought near the hours already worked brings the desktop's notice, a Return after a change
    alters nothing, Escape leaves no row chosen, Delete removes."""
    path = sheet_of(d, [row(today(), "J100", 30, project="Presets")])
    window = open_sheet(d, path)
    d.key("ctrl+b")
    p = d.window("Veltrick - Preset Jobs")
    d.focus(p)
    d.type("j100")
    d.key("Tab")
    d.type("Spring")
    d.key("Tab")
    d.type("12")
    d.screenshot("presets-typed")
    d.key("Return")
    wait_for("J100 in the preset file", lambda: preset_jobs(d) == [["J100", "Spring", "12", "00"]])
    first_row, budget, delete = (60, 57), (126, 249), (411, 277)  # inside the window at its first size
    d.click(*first_row, window=p)
    d.click(*budget, window=p)
    d.key("ctrl+a")
    d.type("1")
    d.key("Return")  # Change
    wait_for("the changed budget", lambda: preset_jobs(d) == [["J100", "Spring", "01", "00"]])
    # Half an hour of the timesheet's J100 is inside the last hour of a one-hour budget: the desktop says so.
    wait_for("the budget notice", lambda: any("J100" in n["summary"] + n["body"] for n in d.notifications()))
    d.key("Return")  # the fields are empty now: nothing to change
    time.sleep(0.5)
    check(preset_jobs(d) == [["J100", "Spring", "01", "00"]], "a Return after Change altered the preset")
    d.click(*first_row, window=p)
    d.key("Escape")
    d.gone("Veltrick - Preset Jobs")
    d.focus(window)
    d.key("ctrl+b")
    p = d.window("Veltrick - Preset Jobs")  # shown again, in a new window
    d.focus(p)
    d.type("J300")
    d.key("Tab")
    d.type("Autumn")
    d.key("Return")  # a new job: the row chosen before Escape is chosen no more
    wait_for("J300 beside J100", lambda: [job[0] for job in preset_jobs(d)] == ["J100", "J300"])
    d.click(first_row[0], first_row[1] + 16, window=p)
    d.click(*delete, window=p)
    wait_for("J300 deleted", lambda: [job[0] for job in preset_jobs(d)] == ["J100"])
    quit_cleanly(d, ["ctrl+q"], window)


def write_clients(d, names):
    """The client list as the program keeps it: a count, then each name as a Pascal string."""
    encoded = [name.encode() for name in names]
    with open(os.path.join(d.config, "VLK8Contacts"), "wb") as out:
        out.write(struct.pack(">h", len(encoded)) + b"".join(bytes([len(n)]) + n for n in encoded))


def add_job(d, job, project, user=None):
    """Edit > Add Job, filled in as a user does, and OK."""
    d.key("ctrl+j")
    dialog = wait_for("the job dialog", lambda: [w for w in d.windows("Veltrick") if d.geometry(w)[3] > 300])[0]
    d.type(job)
    d.key("Tab")  # on to Project: the preset menu's button is Alt+Down away, not a Tab stop
    d.type(project)
    d.key("Tab", "Tab", "space", "Up", "Return")  # past Client to the Operation menu, its last operation
    if user is not None:
        d.key("Tab", delay=0.6)  # the closed menu gives the focus on when its popup has gone
        d.key("ctrl+a")  # the user's name, filled in from the settings
        d.type(user)
    d.screenshot("job-dialog")
    d.key("Return")  # OK, from a field or from the closed menu alike
    wait_for("the job dialog to close", lambda: dialog not in d.windows("Veltrick"))


@journey
def client_view(d):
    """A client's view: a job added there, the highlighted row chosen, started, stopped and deleted; each
    command acts on the row the view highlights."""
    write_clients(d, ["Acme", "Bolt"])
    path = sheet_of(d, [row(today(), "J1", 30, project="One", client="Acme"),
                        row(today(), "J2", 10, project="Two", client="Bolt"),
                        row(today(), "J3", 20, project="Three", client="Acme")])
    window = open_sheet(d, path)
    d.click(60, 33, window=window)  # All Clients
    d.key("Right", "Down")  # open it, and choose Acme: the view shows J1 and J3
    second_row = (210, 67)
    d.click(*second_row, window=window)  # J3
    add_job(d, "J9", "Nine")  # it goes in at the top: J9, J1, J3
    d.key("ctrl+s")
    wait_for("J9 saved", lambda: any(r["job"] == "J9" for r in d.sheet(path)["rows"]))
    d.click(*second_row, window=window)  # J1, where the highlight stayed
    d.key("alt+c", "Return")  # Control > Start
    d.screenshot("client-view-running")
    runs = lambda: {r["job"]: r["run"] for r in d.sheet(path)["rows"]}
    wait_for("J1 to run", lambda: runs()["J1"] == "*")
    check(runs()["J9"] != "*", "the new row runs, not the one highlighted")
    d.key("alt+c", "Return")  # Control > Stop
    wait_for("J1 to stop", lambda: runs()["J1"] == "")
    d.key("alt+e", "Up", "Up", "Return")  # Edit > Delete Job
    time.sleep(0.5)
    d.key("Return")  # yes, delete it
    d.key("ctrl+s")
    wait_for("J1 deleted", lambda: "J1" not in runs())
    check(sorted(runs()) == ["J2", "J3", "J9"], "another row went with J1: %s" % sorted(runs()))
    quit_cleanly(d, ["ctrl+q"], window)


def minutes(row_):
    return int(row_["hours"]) * 60 + int(row_["minutes"])


def on_fast_clock(d, start, factor=60, tz="Europe/London"):
    """From now on the program is veltrick-testclock, its clock reading `start` (local time in `tz`) and
    running `factor` times faster."""
    d.env["TZ"] = tz
    os.environ["TZ"] = tz
    time.tzset()
    d.env["VELTRICK_TEST_CLOCK"] = fast_clock(start, factor)
    d.program = d.testclock


@journey
def first_minute(d):
    """A new user, from the first start to a first timed minute: the welcome, a first operation, a new
    timesheet saved under its name, a job, Start, and the minute in the file."""
    os.remove(os.path.join(d.config, PREFS))
    os.remove(os.path.join(d.config, "VK8 Opps List"))
    on_fast_clock(d, datetime.datetime.combine(datetime.date.today(), datetime.time(10, 0)))
    d.start()
    d.window("Veltrick - First Run")
    d.key("Return")
    prefs = d.window("Veltrick - Preferences")
    d.focus(prefs)
    d.type("Drawing")
    d.key("Return")  # Add
    d.screenshot("first-minute-operation")
    save_preferences(d, prefs)
    d.focus(d.window("Veltrick"))
    d.key("ctrl+n")
    d.focus(d.window("Save Timesheet As"))
    d.type("First")
    d.key("Return")
    path = os.path.join(d.docs, "First.vlk")
    window = d.window("First.*")
    add_job(d, "J7", "Atlas")
    d.key("alt+c", "Return")  # Control > Start
    job = lambda: d.sheet(path)["rows"][0]
    wait_for("a first minute in the file", lambda: job()["run"] == "*" and minutes(job()) >= 1)
    check((job()["job"], job()["project"], job()["operation"]) == ("J7", "Atlas", "Drawing"),
          "the row reads %s" % job())
    d.screenshot("first-minute")
    quit_cleanly(d, ["ctrl+q"], window)


@journey
def idle_after_modal(d):
    """The idle warning, with the desktop's own count of input: minutes of typing in a modal window are
    activity once it closes, not a burst of idle minutes; minutes with no input bring the warning."""
    on_fast_clock(d, datetime.datetime.combine(datetime.date.today(), datetime.time(10, 0)))
    path = sheet_of(d, [row(today(), "J1", 30, project="Idle")])
    window = open_sheet(d, path)
    d.key("ctrl+comma")
    prefs = d.window("Veltrick - Preferences")
    d.focus(prefs)
    d.key("Tab", "Down")  # No Activity Warning: 5 Min
    save_preferences(d, prefs)
    d.focus(window)
    d.key("alt+c", "Return")  # Control > Start
    wait_for("the job to run", lambda: d.sheet(path)["rows"][0]["run"] == "*")
    d.key("ctrl+comma")
    prefs = d.window("Veltrick - Preferences")
    d.focus(prefs)
    for _ in range(16):  # eight minutes of the program's clock, typing all the while
        d.key("a", delay=0.5)
    save_preferences(d, prefs)
    time.sleep(2)
    check(not d.windows("No Activity Warning!"), "a warning after minutes of typing in a modal window")
    d.screenshot("idle-no-warning")
    warning = d.window("No Activity Warning!", timeout=30)  # nobody touches anything now
    d.screenshot("idle-warning")
    d.focus(warning)
    d.key("Return")
    d.gone("No Activity Warning!")
    quit_cleanly(d, ["ctrl+q"], window)


def left_button(d, window):
    """The left one of the two buttons at the foot of the print and export windows."""
    x, y, width, height = d.geometry(window)
    d.click(width - 138, height - 24, window=window)


@journey
def print_and_export(d):
    """A report on paper (a PDF file here) and an export of one job number, in any case it was typed in;
    a custom export with no row ticked says so instead of writing an empty file."""
    path = sheet_of(d, [row(today(), "J100", 30, project="Export", client="Acme"),
                        row(today(), "j100", 15, project="Lower"), row(today(), "B2", 45, project="Other")])
    window = open_sheet(d, path)
    job_number, custom = (30, 61), (30, 139)  # radio buttons inside the print and export windows
    d.key("ctrl+p")
    options = d.window("Veltrick Print")
    d.click(*job_number, window=options)
    left_button(d, options)  # Print
    d.focus(d.window("Print"))
    d.key("Return")  # to the PDF file the print dialog offers
    pdf = os.path.join(d.home, "print.pdf")
    wait_for("the report", lambda: os.path.exists(pdf) and os.path.getsize(pdf) > 0)
    time.sleep(0.5)
    report = subprocess.run(["pdftotext", "-layout", pdf, "-"], capture_output=True, text=True).stdout
    subprocess.run(["pdftoppm", "-png", "-r", "60", "-singlefile", pdf, os.path.join(d.shots, "print-report")])
    check("J100" in report and "j100" in report and "B2" not in report and "Total Time: 00:45" in report,
          "the report of J100 reads:\n" + report)

    d.focus(window)
    d.key("ctrl+t")
    options = d.window("Veltrick Export")
    d.click(*custom, window=options)
    time.sleep(0.3)  # the window grows to show the rows to tick
    left_button(d, options)  # Export, with nothing ticked
    wait_for("the message", lambda: len(d.windows("Veltrick")) > 1)
    d.screenshot("export-nothing-ticked")
    d.key("Return")
    d.focus(options)
    d.click(*job_number, window=options)
    left_button(d, options)
    d.focus(wait_for("the file dialog", lambda: [w for w in d.windows("Veltrick Export") if w != options])[0])
    d.key("Return")  # "sheet Exported.xls" in Documents
    exported = os.path.join(d.docs, "sheet Exported.xls")
    wait_for("the export", lambda: os.path.exists(exported))
    check(not [f for f in os.listdir(d.docs) if f.endswith(".txt")], "a file of the empty custom export")
    # Read as a user's spreadsheet reads it.
    subprocess.run(["soffice", "--headless", "--convert-to", "csv", "--outdir", d.work, exported], env=d.env,
                   capture_output=True, timeout=120)
    with open(os.path.join(d.work, "sheet Exported.csv"), encoding="utf-8", errors="replace") as sheet:
        cells = sheet.read()
    check("J100" in cells and "j100" in cells and "B2" not in cells, "the export of J100 reads:\n" + cells)
    quit_cleanly(d, ["ctrl+q"], window)


@journey
def typing(d):
    """What is typed lands where it was typed and is kept: a new client's name, a job's user, a note."""
    path = sheet_of(d, [row(today(), "J1", 30, project="Typing")])
    window = open_sheet(d, path)
    strip = d.windows("Veltrick")
    x, y, width, height = d.geometry(window)
    d.click(60, height - 53, window=window)  # Add New Client..., above the run button's line
    new_window = lambda: [w for w in d.windows("Veltrick") if w not in strip]
    message = wait_for("the message about the new contacts group", new_window)[0]
    d.focus(message)
    d.key("Return")
    d.focus(wait_for("the new client's window", lambda: [w for w in new_window() if w != message])[0])
    d.type("Northwind Traders")  # Company Name
    d.key("Return")  # Save
    card = lambda: [name for folder, _, names in os.walk(d.contacts) for name in names
                    if "ORG:Northwind Traders" in open(os.path.join(folder, name), errors="replace").read()]
    wait_for("the client's card in the address book", card)
    add_job(d, "J2", "Letters", user="Ann Smith")
    d.key("ctrl+e")  # the new job's notes
    notes = d.window("Notes:")
    d.type("Called the printer")
    x, y, width, height = d.geometry(notes)
    d.click(width - 52, height - 27, window=notes)  # Save
    d.gone("Notes:")
    d.focus(window)
    d.key("ctrl+s")
    job = lambda: [r for r in d.sheet(path)["rows"] if r["job"] == "J2"]
    wait_for("the job in the file", job)
    check((job()[0]["project"], job()[0]["user"], job()[0]["note"]) == ("Letters", "Ann Smith", "Called the printer"),
          "the job reads %s" % job()[0])
    quit_cleanly(d, ["ctrl+q"], window)


@journey
def clock_change(d):
    """A job timed across the autumn change of clocks, one real minute of clock-time long, is charged a
    few minutes, not a day; the spring change likewise."""
    for day, start, end in (("25/10/2026", datetime.datetime(2026, 10, 25, 1, 58), "the autumn change"),
                            ("29/03/2026", datetime.datetime(2026, 3, 29, 0, 58), "the spring change")):
        on_fast_clock(d, start)
        path = sheet_of(d, [row(day, "J1", 0, run="**", project="Clock")], name="clock.vlk")
        window = open_sheet(d, path)
        d.key("alt+c", "Return")  # Control > Start, at 01:58 summer time / 00:58 winter time
        wait_for("the job to run", lambda: d.sheet(path)["rows"][0]["run"] == "*")
        time.sleep(4)  # four minutes of the program's clock, across the change
        d.focus(window)
        d.key("alt+c", "Return")  # Control > Stop
        wait_for("the job to stop", lambda: d.sheet(path)["rows"][0]["run"] == "")
        charged = minutes(d.sheet(path)["rows"][0])
        check(2 <= charged <= 8, "a job across %s was charged %d minutes for about four" % (end, charged))
        quit_cleanly(d, ["ctrl+q"], window)


@journey
def kill_and_restart(d):
    """The program killed while a job runs: the next start says so, charges the minutes it was away and
    times on."""
    on_fast_clock(d, datetime.datetime.combine(datetime.date.today(), datetime.time(10, 0)))
    path = sheet_of(d, [row(today(), "J1", 30, project="Crash")])
    open_sheet(d, path)
    d.key("alt+c", "Return")  # Control > Start
    wait_for("the job to run", lambda: d.sheet(path)["rows"][0]["run"] == "*")
    d.app.kill()
    d.app.wait()
    time.sleep(5)  # five minutes of the program's clock with no program
    d.start(path)
    wait_for("the message about the timer left running", lambda: d.windows("Veltrick"))
    d.screenshot("kill-restart-message")
    d.key("Return")
    window = d.window("sheet.*")
    job = lambda: d.sheet(path)["rows"][0]
    wait_for("the time away charged", lambda: job()["run"] == "*" and minutes(job()) >= 30 + 5)
    quit_cleanly(d, ["ctrl+q"], window)
    check(35 <= minutes(job()) <= 45, "%d minutes after five away and a few timed" % minutes(job()))


def tray_choice(d, downs):
    x, y = d.tray_icon()
    d.click(x, y, 3)
    time.sleep(0.4)
    d.key(*(["Down"] * downs), "Return")


@journey
def tray(d):
    """Twenty choices from the tray's menu, Start, Stop and Show Timesheet in turn: each does what it
    says, the file follows, and the program lives through them all; then a modal window and the quit.
    The run under valgrind's memcheck sees every menu's actions freed or kept."""
    path = sheet_of(d, [row(today(), "J1", 30, project="Tray"), row(today(), "J2", 0, run="**")])
    window = open_sheet(d, path)
    d.key("Down")
    running = False
    for choice in range(20):
        if choice % 3 == 2:
            tray_choice(d, 2)  # Show Timesheet
            wait_for("the timesheet in front", lambda: d.active_title().startswith("sheet"))
        else:
            tray_choice(d, 1)  # Start or Stop, whichever the menu offers
            running = not running
            want = "*" if running else ""
            wait_for("the file to say %s" % ("running" if running else "stopped"),
                     lambda: d.sheet(path)["rows"][0]["run"] == want)
        d.alive()
        if choice == 0:
            d.screenshot("tray-running")
    # A modal window over it all, left by its button.
    d.focus(window)
    d.key("ctrl+comma")
    save_preferences(d, d.window("Veltrick - Preferences"))
    quit_cleanly(d, ["ctrl+q"], window)


@journey
def late_tray(d):
    """A tray that comes after the timesheet window still gets the item: an XEmbed tray started seconds
    later takes the icon, whose menu works; a StatusNotifierWatcher started later still is told of the
    item, which leaves the XEmbed tray, shows the job's time as its label, and runs Start from the menu
    the watcher reads; a watcher that restarts is told again."""
    path = sheet_of(d, [row(today(), "J1", 75, project="Late")])
    window = open_sheet(d, path)
    d.key("Down")
    time.sleep(3)
    check(not d.tray_icons(), "an icon with no tray")
    d.start_tray()
    run = lambda: d.sheet(path)["rows"][0]["run"]
    for want in ("*", ""):
        tray_choice(d, 1)  # Start, then Stop
        wait_for("the file to say %r" % want, lambda: run() == want)
        d.screenshot("late-tray-" + ("running" if want else "stopped"))
    watcher, log = d.start_watcher()
    items = lambda: [json.loads(line) for line in open(log) if line.strip()]
    item = wait_for("the item registered with the watcher", items)[0]
    wait_for("the XEmbed icon to go", lambda: not d.tray_icons())
    job = d.sheet(path)["rows"][0]
    check((item["label"], item["guide"]) == ("%s:%s" % (job["hours"], job["minutes"]), "00:00"),
          "the label reads %s beside %s:%s" % (item["label"], job["hours"], job["minutes"]))
    check(any(20 <= w <= 24 and h == w and size == w * h * 4 and drawn for w, h, size, drawn in item["icons"]),
          "no icon of tray size: %s" % item["icons"])
    check(item["submenu"] == "submenu" and "Start" in item["menu"], "the menu reads %s" % item["menu"])
    subprocess.run(["dbus-send", "--session", "--print-reply", "--dest=org.kde.StatusNotifierWatcher",
                    "/StatusNotifierWatcher", "org.veltrick.Journey.Click", "string:Start"], env=d.env, check=True,
                   stdout=subprocess.DEVNULL)
    wait_for("the file to say running", lambda: run() == "*")
    watcher.terminate()
    watcher.wait()
    watcher, log = d.start_watcher()
    item = wait_for("the item registered with the new watcher", items)[0]
    check("Stop" in item["menu"], "the menu of the running job reads %s" % item["menu"])
    d.alive()
    quit_cleanly(d, ["ctrl+q"], window)


late_tray.desktop = {"tray": False}


class SyncedFolders(threading.Thread):
    """Two folders kept in step the way a sync client keeps two computers: a file changed on one side
    replaces the other side's whole file (written beside, then renamed over it); changed on both, the newer
    wins and the other is kept as a conflict copy. Every version of `watch_job`'s minutes seen in the first
    folder is noted, to tell whether time ever went backwards."""

    def __init__(self, cli, one, other, name, watch_job):
        super().__init__(daemon=True)
        self.cli, self.folders, self.name, self.watch_job = cli, (one, other), name, watch_job
        self.synced, self.seen, self.copies, self.running = {}, [], 0, True
        self.in_place = False  # some clients rewrite the file itself instead
        os.makedirs(other, exist_ok=True)

    def read(self, folder):
        try:
            with open(os.path.join(folder, self.name), "rb") as file:
                return file.read()
        except FileNotFoundError:
            return None

    def put(self, folder, name, data):
        if self.in_place and os.path.exists(os.path.join(folder, name)):
            with open(os.path.join(folder, name), "r+b") as file:
                file.write(data)
                file.truncate()
            return
        temp = os.path.join(folder, ".sync-%s.tmp" % name)
        with open(temp, "wb") as file:
            file.write(data)
        os.replace(temp, os.path.join(folder, name))

    def run(self):
        while self.running:
            one, other = (self.read(folder) for folder in self.folders)
            base = self.synced.get(self.name)
            if one is not None and one != other:
                if other is None or other == base:
                    self.put(self.folders[1], self.name, one)
                    self.synced[self.name] = one
                elif one == base:
                    self.put(self.folders[0], self.name, other)
                    self.synced[self.name] = other
                else:  # both changed: the first folder's wins, the other's is kept beside in both
                    self.copies += 1
                    copy = self.name.replace(".vlk", ".sync-conflict-%d-JOURNEY.vlk" % self.copies)
                    for folder in self.folders:
                        self.put(folder, copy, other)
                    self.put(self.folders[1], self.name, one)
                    self.synced[self.name] = one
            elif one is not None:
                self.synced[self.name] = one
            self.note()
            time.sleep(0.2)

    def note(self):
        done = subprocess.run([self.cli, "dump", os.path.join(self.folders[0], self.name)], capture_output=True)
        if done.returncode == 0:
            rows = json.loads(done.stdout)["rows"]
            self.seen += [minutes(r) for r in rows if r["job"] == self.watch_job][:1]


def add_row_elsewhere(d, path, job):
    """The other computer adds a row with veltrick-cli, which writes nothing over a version it did not read."""
    def added():
        sheet = d.sheet(path)
        sheet["rows"].append(row(today(), job, 20, project="Laptop"))
        return subprocess.run([d.cli, "write", path], input=json.dumps(sheet).encode()).returncode == 0
    wait_for("the row %s added on the other computer" % job, added)


@journey
def synced_folders(d):
    """A timesheet in a folder that a sync client keeps in step with a second computer's. Rows are added
    there while a job is timed here, and while it is stopped; at the end both computers' rows are in the
    file, and the job's minutes never went back."""
    on_fast_clock(d, datetime.datetime.combine(datetime.date.today(), datetime.time(10, 0)), factor=10)
    path = sheet_of(d, [row(today(), "J1", 30, project="Desk")])
    laptop = os.path.join(d.work, "laptop")
    sync = SyncedFolders(d.cli, d.docs, laptop, "sheet.vlk", "J1")
    sync.start()
    there = os.path.join(laptop, "sheet.vlk")
    try:
        window = open_sheet(d, path)
        d.key("alt+c", "Return")  # Control > Start
        started = time.monotonic()
        job = lambda: [r for r in d.sheet(path)["rows"] if r["job"] == "J1"][0]
        wait_for("a minute timed", lambda: job()["run"] == "*" and minutes(job()) >= 31, 30)
        wait_for("the laptop in step", lambda: sync.read(laptop) == sync.read(d.docs))
        strip = set(d.windows("Veltrick"))  # the status strip has the program's name too
        boxes = lambda: [w for w in d.windows("Veltrick") if w not in strip]
        add_row_elsewhere(d, there, "L1")
        question = wait_for("the question", boxes, 30)[0]
        d.screenshot("synced-question")
        asked = minutes(job())
        time.sleep(7)  # over a minute of the program's clock: the job is timed on while the question waits
        d.focus(question)
        d.key("Return")  # Open Theirs: the job stops, its minutes go on its row of their file
        timing = time.monotonic() - started
        told = wait_for("the minutes carried over", lambda: [w for w in boxes() if w != question])[0]
        d.screenshot("synced-carried")
        d.focus(told)
        d.key("Return")
        wait_for("no box left", lambda: not boxes())
        jobs = lambda sheet: sorted(r["job"] for r in d.sheet(sheet)["rows"])
        wait_for("both rows in the file", lambda: jobs(path) == ["J1", "L1"] and job()["run"] == "")
        wait_for("the laptop in step", lambda: jobs(there) == ["J1", "L1"])
        timed = minutes(job())
        check(timed > asked, "the minute of the question was lost: %d, then %d" % (asked, timed))
        sync.in_place = True
        add_row_elsewhere(d, there, "L2")  # the job stopped, nothing unsaved: read again, no question
        wait_for("the new row read in quietly", lambda: sync.read(laptop) == sync.read(d.docs), 10)
        time.sleep(2)
        check(not boxes(), "a question came for a clean timesheet")
        d.focus(window)
        d.key("alt+c", "Return")  # Control > Start
        started = time.monotonic()
        wait_for("the job timed on", lambda: job()["run"] == "*" and minutes(job()) >= timed + 2, 30)
        quit_cleanly(d, ["ctrl+q"], window)
        timing += time.monotonic() - started
        wait_for("the laptop in step", lambda: sync.read(laptop) == sync.read(d.docs))
    finally:
        sync.running = False
        sync.join()
    for sheet in (path, there):
        check(jobs(sheet) == ["J1", "L1", "L2"], "%s holds %s" % (sheet, jobs(sheet)))
    check(all(a <= b for a, b in zip(sync.seen, sync.seen[1:])), "the job's minutes went back: %s" % sync.seen)
    # Ten of the program's minutes a real minute; a minute either way for each start and stop.
    clock = 30 + timing * 10 / 60
    check(abs(minutes(job()) - clock) <= 2, "J1 holds %d minutes, the clock says %.1f" % (minutes(job()), clock))


def main():
    parser = argparse.ArgumentParser()
    if sys.argv[1:] == ["--list"]:
        print(";".join(JOURNEYS))  # for the build, which makes a test of each
        return 0
    parser.add_argument("build")
    parser.add_argument("name", choices=sorted(JOURNEYS))
    parser.add_argument("--wrap", default="", help="a command put before the program, such as valgrind")
    parser.add_argument("--keep", action="store_true", help="keep the desktop's folder")
    args = parser.parse_args()
    d = Desktop(args.build, wrapper=shlex.split(args.wrap), **getattr(JOURNEYS[args.name], "desktop", {}))
    failed = False
    try:
        JOURNEYS[args.name](d)
        print("journey %s: passed" % args.name)
    except JourneyFailed as failure:
        failed = True
        print("journey %s FAILED: %s" % (args.name, failure))
        print("screen:", d.screenshot(args.name + "-failed"))
    except Exception:
        failed = True
        traceback.print_exc()
        print("screen:", d.screenshot(args.name + "-failed"))
    finally:
        if d.app is not None and d.app.poll() is None:
            d.app.kill()
        if failed and d.app is not None:
            print("program's errors:", d.errors()[-3000:])
        d.close(keep=args.keep or failed)
        if args.keep or failed:
            print("kept", d.work)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
