"""The real program on a desktop of its own, for the stress runs: a home folder with settings and an
operations list (so no first-run window comes), Xvfb with a window manager, and the program started
on a timesheet written by veltrick-cli."""
import json
import os
import shutil
import subprocess
import tempfile
import time

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


class Desktop:
    def __init__(self, build, extra_env=None):
        self.build = os.path.abspath(build)
        self.program = os.path.join(self.build, "src", "veltrick")
        self.cli = os.path.join(self.build, "src", "cli", "veltrick-cli")
        self.work = tempfile.mkdtemp(prefix="veltrick-stress-")
        home = os.path.join(self.work, "home")
        self.docs = os.path.join(home, "Documents")
        config = os.path.join(home, ".config", "Veltrick")
        runtime = os.path.join(self.work, "run")
        for folder in (self.docs, config, runtime):
            os.makedirs(folder, mode=0o700, exist_ok=True)
        # Settings with Net Link on, and an operations list.
        corpus = os.path.join(SOURCE, "fuzz", "corpus")
        shutil.copy(os.path.join(corpus, "prefs", "prefs"), os.path.join(config, "Veltrick8 prefs"))
        shutil.copy(os.path.join(corpus, "operations", "three"), os.path.join(config, "VK8 Opps List"))
        self.display = ":%d" % (90 + os.getpid() % 100)
        self.env = dict(os.environ, HOME=home, XDG_CONFIG_HOME=os.path.join(home, ".config"),
                        XDG_RUNTIME_DIR=runtime, DISPLAY=self.display, LC_ALL="en_GB.UTF-8",
                        QT_QPA_PLATFORM="xcb", **(extra_env or {}))
        self.env.pop("WAYLAND_DISPLAY", None)
        self.env.pop("DBUS_SESSION_BUS_ADDRESS", None)
        self.xvfb = subprocess.Popen(["Xvfb", self.display, "-screen", "0", "1280x800x24", "-nolisten", "tcp"],
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(1)
        self.wm = subprocess.Popen(["openbox"], env=self.env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(0.5)
        self.app = None

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

    def start(self, path):
        self.app = subprocess.Popen([self.program, path], env=self.env,
                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return self.app

    def key(self, name):
        """A key to the focused window (the window manager gives a new dialog the focus)."""
        subprocess.run(["xdotool", "key", name], env=self.env, capture_output=True)

    def resident_kib(self):
        with open("/proc/%d/status" % self.app.pid) as status:
            for line in status:
                if line.startswith("VmRSS:"):
                    return int(line.split()[1])
        return 0

    def close(self, keep=False):
        if self.app and self.app.poll() is None:
            self.app.kill()
            self.app.wait()
        self.wm.terminate()
        self.xvfb.terminate()
        if not keep:
            shutil.rmtree(self.work, ignore_errors=True)


def row(date, job, minutes=0, run="", project="", client=""):
    return {"date": date, "job": job, "project": project, "hours": "%02d" % (minutes // 60),
            "minutes": "%02d" % (minutes % 60), "operation": "Design", "client": client, "run": run,
            "note": "", "user": "", "budget": ""}
