#!/usr/bin/env python3
"""A StatusNotifierWatcher for the journeys, with the tray behind it: for every item registered it writes
a line of JSON to the file given with what a tray shows of the item (label, icon sizes, menu). Its method
org.veltrick.Journey.Click(s label) sends the last item's menu the click on its item of that label."""
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
        self.bus, self.log, self.items = bus, log, []

    @dbus.service.method(NAME, in_signature="s")
    def RegisterStatusNotifierItem(self, service):
        self.items.append(str(service))
        GLib.idle_add(self.show, str(service))  # the item is asked once it has its answer

    def item(self, service):
        item = self.bus.get_object(service, "/StatusNotifierItem")
        props = item.GetAll(ITEM, dbus_interface=dbus.PROPERTIES_IFACE)
        return props, dbus.Interface(self.bus.get_object(service, props["Menu"]), "com.canonical.dbusmenu")

    def show(self, service):
        props, menu = self.item(service)
        _, (_, root, children) = menu.GetLayout(0, -1, [])
        with open(self.log, "a") as out:
            out.write(json.dumps({
                "label": str(props["XAyatanaLabel"]), "guide": str(props["XAyatanaLabelGuide"]),
                "icons": [[int(w), int(h), len(data), any(data)] for w, h, data in props["IconPixmap"]],
                "menu": [str(child[1].get("label", child[1].get("type"))) for child in children],
                "submenu": str(root.get("children-display"))}) + "\n")

    @dbus.service.method("org.veltrick.Journey", in_signature="s")
    def Click(self, label):
        menu = self.item(self.items[-1])[1]
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
