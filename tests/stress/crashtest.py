#!/usr/bin/env python3
"""Kills the timing program with SIGKILL at random instants, half of them the moment a save has begun,
and checks what each restart finds.

The program runs on a desktop of its own on a timesheet of 20,000 rows whose first row is timing, with
its clock and timers sped up (VELTRICK_TEST_CLOCK, read only by the test program veltrick-testclock). After
each kill the timesheet opens with every row (veltrick-cli dump) and the first row is still marked
running; once the restarted program has charged the time it missed and saved, the row holds every
minute since the job started but the one in progress. Exactly: the row's minutes always equal the
minutes from the job's start to the start of the count under way that the file holds, after a kill and
after each restart, so nothing but the minute in progress can be missing. Prints kills, files checked
and the worst loss; exits 1 on any failure.

crashtest.py BUILD_DIR [KILLS] [SEED]
"""
import datetime
import os
import random
import signal
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "journeys"))
from desktop import Desktop, row  # noqa: E402

FACTOR = 40  # one minute of the program's clock every 1.5 s
ROWS = 20000


def temp_files(folder):
    return {name for name in os.listdir(folder) if name.endswith(".tmp")}


def main():
    build = sys.argv[1]
    kills = int(sys.argv[2]) if len(sys.argv) > 2 else 500
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else int(time.time())
    rng = random.Random(seed)

    # The fast clock starts at 00:20 tomorrow, so that the whole run stays inside one day:
    # fast = origin + (real - origin) * FACTOR.
    real0 = time.time() * 1000
    fast0 = datetime.datetime.combine(datetime.date.today() + datetime.timedelta(days=1),
                                      datetime.time(0, 20)).timestamp() * 1000
    origin = int((FACTOR * real0 - fast0) / (FACTOR - 1))

    def fast(real_seconds):
        return datetime.datetime.fromtimestamp((origin + (real_seconds * 1000 - origin) * FACTOR) / 1000)

    desktop = Desktop(build, {"VELTRICK_TEST_CLOCK": "%d:%d" % (origin, FACTOR)})
    desktop.program = desktop.testclock
    start = fast(time.time()).replace(second=0, microsecond=0)
    date = start.strftime("%d/%m/%Y")
    rows = [row(date, "RUN1", run="*", project="Crash test")]
    rows += [row(date, "J%05d" % i, 60 + i % 60, project="Project %d" % i, client="Client %d" % (i % 50))
             for i in range(1, ROWS)]
    sheet = desktop.write_sheet("crash.vlk", {"starthrs": str(start.hour), "startmin": str(start.minute),
                                              "rows": rows})

    def timed(data):
        return int(data["rows"][0]["hours"]) * 60 + int(data["rows"][0]["minutes"])

    def lost(data):
        """Minutes from the job's start to where the file's count under way begins, less those in the row."""
        counted_from = int(data["starthrs"]) * 60 + int(data["startmin"])
        return counted_from - (start.hour * 60 + start.minute) - timed(data)

    def expected(real_seconds):
        return int((fast(real_seconds) - start).total_seconds() // 60)

    failures = []
    worst_loss = worst_unsaved = mid_save = checked = 0
    litter = set()  # temporary files left by kills in the middle of a save
    try:
        for kill in range(kills + 1):
            # (Re)start, answer the message about the timer left running, wait for the first save.
            before = os.stat(sheet).st_mtime_ns
            desktop.start(sheet)
            deadline = time.time() + 30
            next_key = time.time() + 0.7
            while os.stat(sheet).st_mtime_ns == before or temp_files(desktop.docs) - litter:
                if time.time() > deadline:
                    failures.append("kill %d: the restarted program did not save within 30 s" % kill)
                    return
                if time.time() >= next_key:
                    desktop.key("Return")
                    next_key = time.time() + 0.7
                time.sleep(0.02)
            time.sleep(0.05)
            data, error = desktop.dump(sheet)
            if data is None:
                failures.append("kill %d: after the restart the file does not open: %s" % (kill, error))
                return
            loss = lost(data)
            worst_loss = max(worst_loss, loss)
            if loss != 0:
                failures.append("kill %d: %d minutes lost after the restart" % (kill, loss))
            if kill == kills:
                return

            # Kill at a random instant, or the moment a save has made its temporary file.
            if kill % 2 == 0:
                time.sleep(rng.uniform(0.05, 3.0))
            else:
                deadline = time.time() + 10
                while not temp_files(desktop.docs) - litter and time.time() < deadline:
                    pass
            killed_at = time.time()
            desktop.app.send_signal(signal.SIGKILL)
            desktop.app.wait()
            # A temporary file left behind: the kill came between its creation and its rename.
            in_save = bool(temp_files(desktop.docs) - litter)
            mid_save += in_save
            litter = temp_files(desktop.docs)

            data, error = desktop.dump(sheet)
            checked += 1
            if data is None:
                failures.append("kill %d: the file does not open: %s" % (kill, error))
                return
            if len(data["rows"]) != ROWS:
                failures.append("kill %d: %d rows instead of %d" % (kill, len(data["rows"]), ROWS))
            if data["rows"][0]["run"] != "*":
                failures.append("kill %d: the running row is not marked running" % kill)
            if lost(data) != 0:
                failures.append("kill %d: the file lost %d minutes" % (kill, lost(data)))
            unsaved = expected(killed_at) - timed(data)
            worst_unsaved = max(worst_unsaved, unsaved)
            print("kill %d/%d%s: %d min not yet saved" % (kill + 1, kills, " (mid-save)" if in_save else "", unsaved),
                  flush=True)
    finally:
        print("seed %d: %d kills (%d in the middle of a save), %d files checked; worst loss after a restart "
              "%d min, worst unsaved at a kill %d min; %d temporary files of kills still there (under a minute "
              "old)" % (seed, kills, mid_save, checked, worst_loss, worst_unsaved, len(temp_files(desktop.docs))))
        for failure in failures:
            print("FAIL:", failure)
        desktop.close(keep=bool(failures))
        if failures:
            print("kept", desktop.work)
        sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
