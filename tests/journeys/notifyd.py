#!/usr/bin/env python3
"""A notification service for the journeys: takes the desktop's org.freedesktop.Notifications name on
the session bus and writes every notice it is shown as a line of JSON to the file given. A click on a
notice is played with
  dbus-send --session --dest=org.freedesktop.Notifications /org/freedesktop/Notifications \\
            org.veltrick.Journey.Click uint32:ID
which sends the notice's "default" action as a desktop does."""
import json
import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"


class Notifications(dbus.service.Object):
    def __init__(self, bus, log):
        super().__init__(bus, PATH)
        self.log = log
        self.last = 0

    @dbus.service.method(NAME, in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, app, replaces, icon, summary, body, actions, hints, timeout):
        self.last += 1
        with open(self.log, "a") as out:
            out.write(json.dumps({"id": self.last, "app": str(app), "icon": str(icon), "summary": str(summary),
                                  "body": str(body), "actions": [str(a) for a in actions]}) + "\n")
        return self.last

    @dbus.service.method(NAME, in_signature="u")
    def CloseNotification(self, id_):
        self.NotificationClosed(id_, 3)

    @dbus.service.method(NAME, out_signature="as")
    def GetCapabilities(self):
        return ["actions", "body"]

    @dbus.service.method(NAME, out_signature="ssss")
    def GetServerInformation(self):
        return "journey", "veltrick", "1", "1.2"

    @dbus.service.signal(NAME, signature="uu")
    def NotificationClosed(self, id_, reason):
        pass

    @dbus.service.signal(NAME, signature="us")
    def ActionInvoked(self, id_, key):
        pass

    @dbus.service.method("org.veltrick.Journey", in_signature="u")
    def Click(self, id_):
        self.ActionInvoked(id_, "default")
        self.NotificationClosed(id_, 2)


def main():
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    service = Notifications(bus, sys.argv[1])
    name = dbus.service.BusName(NAME, bus)
    open(sys.argv[1], "a").close()  # ready
    GLib.MainLoop().run()
    del service, name


if __name__ == "__main__":
    main()
