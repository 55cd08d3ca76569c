#!/usr/bin/env python3
"""A StatusNotifierWatcher for the journeys, with the tray behind it: takes org.kde.StatusNotifierWatcher
on the session bus and, for every item registered with it, writes a line of JSON to the file given with
what a tray shows of the item: its label, its icon's sizes and its menu. A click on a menu item is played
with
  dbus-send --session --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \\
            org.veltrick.Journey.Click string:LABEL
which sends the last item's menu the "clicked" event of its item of that label, as a tray does."""
import json
import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

NAME = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"


class Watcher(dbus.service.Object):
    def __init__(self, bus, log):
        super().__init__(bus, "/StatusNotifierWatcher")
        self.bus = bus
        self.log = log
        self.items = []

    @dbus.service.method(NAME, in_signature="s")
    def RegisterStatusNotifierItem(self, service):
        self.items.append(str(service))
        GLib.idle_add(self.show, str(service))  # the item is asked once it has its answer

    def menu(self, service):
        path = self.bus.get_object(service, "/StatusNotifierItem").Get(ITEM, "Menu", dbus_interface=dbus.PROPERTIES_IFACE)
        return dbus.Interface(self.bus.get_object(service, path), "com.canonical.dbusmenu")

    def show(self, service):
        item = self.bus.get_object(service, "/StatusNotifierItem")
        props = item.GetAll(ITEM, dbus_interface=dbus.PROPERTIES_IFACE)
        revision, (root, root_props, children) = self.menu(service).GetLayout(0, -1, [])
        with open(self.log, "a") as out:
            out.write(json.dumps({
                "service": service, "label": str(props["XAyatanaLabel"]), "guide": str(props["XAyatanaLabelGuide"]),
                "icons": [[int(w), int(h), len(data), any(data)] for w, h, data in props["IconPixmap"]],
                "menu": [str(child[1].get("label", child[1].get("type", ""))) for child in children],
                "submenu": str(root_props.get("children-display", ""))}) + "\n")
        return False

    @dbus.service.method("org.veltrick.Journey", in_signature="s")
    def Click(self, label):
        menu = self.menu(self.items[-1])
        for id_, props, _ in menu.GetLayout(0, 1, ["label"])[1][2]:
            if props.get("label") == label:
                menu.Event(id_, "clicked", dbus.String("", variant_level=1), dbus.UInt32(0))


def main():
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    watcher = Watcher(bus, sys.argv[1])
    name = dbus.service.BusName(NAME, bus)
    open(sys.argv[1], "a").close()  # ready
    GLib.MainLoop().run()
    del watcher, name


if __name__ == "__main__":
    main()
