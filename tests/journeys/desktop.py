"""The real program on a desktop of its own: a home folder with settings and an operations list (so no
first-run window comes), Xvfb with a window manager, a task bar with a tray, a session bus with a
notification service, and the program started on a timesheet written by veltrick-cli. A journey drives
it with keys and clicks as a user does and reads the results where a user would: the file, the windows,
the notifications, the screen."""
import datetime
import json
import os
import shutil
import subprocess
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.dirname(os.path.dirname(HERE))
PREFS = "Veltrick8 prefs"


class JourneyFailed(Exception):
    pass


def wait_for(what, condition, timeout=15.0, step=0.1):
    """condition() until it gives something true; its value, or JourneyFailed naming what never came."""
    deadline = time.time() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.time() > deadline:
            raise JourneyFailed("waited %.0f s for %s" % (timeout, what))
        time.sleep(step)


def fast_clock(start, factor):
    """VELTRICK_TEST_CLOCK for veltrick-testclock: a clock that reads `start` (a datetime, local time of
    the process) now and runs `factor` times faster, fast = origin + (real - origin) * factor."""
    real = time.time() * 1000
    return "%d:%d" % (int((factor * real - start.timestamp() * 1000) / (factor - 1)), factor)


class Desktop:
    def __init__(self, build, extra_env=None, screen="1280x800", shots=None, wrapper=(), tray=True):
        self.build = os.path.abspath(build)
        self.wrapper = list(wrapper)  # a command the program runs under, such as valgrind
        self.program = os.path.join(self.build, "src", "veltrick")  # what start() runs: the test clock for some
        self.testclock = os.path.join(self.build, "src", "veltrick-testclock")
        self.cli = os.path.join(self.build, "src", "cli", "veltrick-cli")
        self.shots = shots or os.path.join(self.build, "journeys")
        self.work = tempfile.mkdtemp(prefix="veltrick-desktop-")
        self.home = os.path.join(self.work, "home")
        self.docs = os.path.join(self.home, "Documents")
        self.config = os.path.join(self.home, ".config", "Veltrick")
        self.contacts = os.path.join(self.home, ".local", "share", "contacts")
        runtime = os.path.join(self.work, "run")
        for folder in (self.docs, self.config, runtime, self.shots):
            os.makedirs(folder, mode=0o700, exist_ok=True)
        # Settings with Net Link, the strip and stop-on-quit on, and an operations list.
        corpus = os.path.join(SOURCE, "fuzz", "corpus")
        shutil.copy(os.path.join(corpus, "prefs", "prefs"), os.path.join(self.config, PREFS))
        shutil.copy(os.path.join(corpus, "operations", "three"), os.path.join(self.config, "VK8 Opps List"))
        self.procs = []
        self.app = None
        self.xvfb = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", screen + "x24", "-nolisten", "tcp"],
                                     stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.display = ":" + self.xvfb.stdout.readline().decode().strip()
        self.env = dict(os.environ, HOME=self.home, XDG_CONFIG_HOME=os.path.join(self.home, ".config"),
                        XDG_DATA_HOME=os.path.join(self.home, ".local", "share"), XDG_RUNTIME_DIR=runtime,
                        DISPLAY=self.display, LC_ALL="en_GB.UTF-8", QT_QPA_PLATFORM="xcb",
                        **(extra_env or {}))
        for name in ("WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "SESSION_MANAGER", "XDG_CURRENT_DESKTOP"):
            self.env.pop(name, None)
        # A session bus of our own, with a notification service that writes down what it is shown.
        bus = subprocess.run(["dbus-daemon", "--session", "--fork", "--print-address=1", "--print-pid=1"],
                             capture_output=True, env=self.env, check=True).stdout.decode().split()
        self.env["DBUS_SESSION_BUS_ADDRESS"], self.bus_pid = bus[0], int(bus[1])
        self.notices = os.path.join(self.work, "notices.jsonl")
        # Debian's own Python, which has the bus bindings of python3-dbus.
        self.procs.append(self._spawn(["/usr/bin/python3", os.path.join(HERE, "notifyd.py"), self.notices]))
        self.procs.append(self._spawn(["openbox"]))
        if tray:
            self.start_tray()
        wait_for("the notification service", lambda: os.path.exists(self.notices), 60)

    def start_tray(self):
        """The task bar with its XEmbed tray; a desktop made without it (tray=False) gets it later."""
        tint2 = self._spawn(["tint2", "-c", os.path.join(HERE, "tint2rc")])
        self.procs.append(tint2)
        # Generous: on a machine busy building, the desktop's parts can take a while to come up.
        wait_for("the task bar", lambda: self._xdotool("search", "--class", "tint2") or tint2.poll() is not None, 60)
        if tint2.poll() is not None:
            raise JourneyFailed("the task bar ended at its start (exit %d)" % tint2.returncode)

    def start_watcher(self):
        """A StatusNotifierWatcher (snwatcher.py): its process, and the file where it writes each item."""
        log = os.path.join(self.work, "items-%d.jsonl" % time.time_ns())
        watcher = self._spawn(["/usr/bin/python3", os.path.join(HERE, "snwatcher.py"), log])
        self.procs.append(watcher)
        wait_for("the StatusNotifierWatcher", lambda: os.path.exists(log), 60)
        return watcher, log

    def _spawn(self, argv):
        return subprocess.Popen(argv, env=self.env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def _xdotool(self, *args):
        done = subprocess.run(["xdotool", *args], env=self.env, capture_output=True, timeout=30)
        return done.stdout.decode().strip()

    # The program.
    def write_sheet(self, name, sheet):
        path = os.path.join(self.docs, name)
        subprocess.run([self.cli, "write", path], input=json.dumps(sheet).encode(), check=True)
        return path

    def dump(self, path):
        """The timesheet as veltrick-cli reads it, or None and the reason."""
        done = subprocess.run([self.cli, "dump", path], capture_output=True)
        if done.returncode != 0:
            return None, done.stderr.decode(errors="replace")
        return json.loads(done.stdout), ""

    def sheet(self, path):
        data, error = self.dump(path)
        if data is None:
            raise JourneyFailed("the timesheet does not read: " + error)
        return data

    def start(self, *args):
        self.stderr = os.path.join(self.work, "stderr-%d.txt" % time.time_ns())
        with open(self.stderr, "wb") as errors:
            self.app = subprocess.Popen([*self.wrapper, self.program, *args], env=self.env,
                                        stdout=subprocess.DEVNULL, stderr=errors)
        return self.app

    def ended(self):
        """The program's exit code once it has ended by itself, or JourneyFailed."""
        timeout = 120.0 if self.wrapper else 30.0
        try:
            return self.app.wait(timeout)
        except subprocess.TimeoutExpired:
            raise JourneyFailed("the program still runs %.0f s later" % timeout) from None

    def alive(self):
        if self.app.poll() is not None:
            raise JourneyFailed("the program ended (exit %s): %s" % (self.app.returncode, self.errors()[-2000:]))

    def errors(self):
        """What the program has written on its standard error."""
        with open(self.stderr, "rb") as errors:
            return errors.read().decode(errors="replace")

    def resident_kib(self):
        with open("/proc/%d/status" % self.app.pid) as status:
            for line in status:
                if line.startswith("VmRSS:"):
                    return int(line.split()[1])
        return 0

    # The screen.
    def windows(self, title):
        """The program's visible windows whose whole title matches `title` (a regular expression)."""
        found = self._xdotool("search", "--all", "--onlyvisible", "--pid", str(self.app.pid), "--name", "^(%s)$" % title)
        return [int(w) for w in found.split()]

    def window(self, title, timeout=None):
        timeout = timeout or (120.0 if self.wrapper else 15.0)
        return wait_for("a window titled %r" % title, lambda: self.windows(title), timeout)[0]

    def gone(self, title, timeout=10.0):
        wait_for("the window %r to close" % title, lambda: not self.windows(title), timeout)

    def title(self, window):
        return self._xdotool("getwindowname", str(window))

    def focus(self, window):
        self._xdotool("windowactivate", "--sync", str(window))
        wait_for("the focus on %r" % self.title(window), lambda: self._xdotool("getactivewindow") == str(window), 5)

    def active_title(self):
        active = self._xdotool("getactivewindow")
        return self._xdotool("getwindowname", active) if active else ""

    def geometry(self, window):
        """x, y, width, height of a window on the screen (the position is only near: window managers'
        frames shift it; click inside a window by `click(..., window=)`)."""
        out = self._xdotool("getwindowgeometry", "--shell", str(window))
        values = dict(line.split("=") for line in out.splitlines() if "=" in line)
        return int(values["X"]), int(values["Y"]), int(values["WIDTH"]), int(values["HEIGHT"])

    def key(self, *names, delay=0.15):
        """Keys to the focused window, as a user presses them one after another."""
        for name in names:
            self._xdotool("key", "--clearmodifiers", name)
            time.sleep(delay)

    def type(self, text):
        self._xdotool("type", "--delay", "40", text)
        time.sleep(0.2)

    def click(self, x, y, button=1, window=None):
        """A click at x, y of the screen, or of the inside of `window`."""
        where = ["--window", str(window)] if window else []
        # No --sync: it waits for the pointer to move, for ever when it is there already. The server takes
        # the move and the click in order anyway.
        self._xdotool("mousemove", *where, str(x), str(y), "click", str(button))
        time.sleep(0.2)

    def tray_icons(self):
        """Centres of the program's icons in the task bar's tray: its small windows that the tray has mapped."""
        centres = []
        for window in self._xdotool("search", "--all", "--onlyvisible", "--pid", str(self.app.pid), "--name", "").split():
            x, y, width, height = self.geometry(int(window))
            if width <= 64 and height <= 64 and y < 64:
                centres.append((x + width // 2, y + height // 2))
        return centres

    def tray_icon(self):
        return wait_for("the tray icon", self.tray_icons, 15)[0]

    def screenshot(self, name):
        path = os.path.join(self.shots, name + ".png")
        subprocess.run(["import", "-display", self.display, "-window", "root", path], env=self.env,
                       capture_output=True, timeout=30)
        return path

    def notifications(self):
        with open(self.notices) as lines:
            return [json.loads(line) for line in lines if line.strip()]

    def close(self, keep=False):
        if self.app and self.app.poll() is None:
            self.app.kill()
            self.app.wait()
        for proc in reversed(self.procs):
            proc.terminate()
        for proc in self.procs:
            try:
                proc.wait(5)
            except subprocess.TimeoutExpired:
                proc.kill()
        try:
            os.kill(self.bus_pid, 15)
        except OSError:
            pass
        self.xvfb.terminate()
        self.xvfb.wait()
        if not keep:
            shutil.rmtree(self.work, ignore_errors=True)


def today():
    return datetime.date.today().strftime("%d/%m/%Y")


def row(date, job, minutes=0, run="", project="", client="", operation="Design"):
    return {"date": date, "job": job, "project": project, "hours": "%02d" % (minutes // 60),
            "minutes": "%02d" % (minutes % 60), "operation": operation, "client": client, "run": run,
            "note": "", "user": "", "budget": ""}

