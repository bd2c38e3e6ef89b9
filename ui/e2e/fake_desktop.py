#!/usr/bin/python3
"""The desktop services the tray app talks to, faked on the session bus for the end-to-end run.

- org.kde.StatusNotifierWatcher: answers IsStatusNotifierHostRegistered = true, and lists its
  properties in its introspection data, because Qt reads them through QDBusInterface, which
  trusts introspection. Each registered item is logged, and its icon is saved as a PNG when
  asked (SIGUSR1), the way a panel would draw it.
- org.freedesktop.Notifications: logs each Notify.

Usage: fake_desktop.py LOG ICON_PNG. Each event is one JSON line in LOG with its time (seconds
since the epoch); "ready" comes first.
"""
import json
import signal
import subprocess
import sys
import time

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

WATCHER = "org.kde.StatusNotifierWatcher"
NOTIFICATIONS = "org.freedesktop.Notifications"

WATCHER_XML = """<!DOCTYPE node PUBLIC "-//freedesktop//DTD D-BUS Object Introspection 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd">
<node>
  <interface name="org.kde.StatusNotifierWatcher">
    <method name="RegisterStatusNotifierItem"><arg name="service" type="s" direction="in"/></method>
    <method name="RegisterStatusNotifierHost"><arg name="service" type="s" direction="in"/></method>
    <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    <property name="ProtocolVersion" type="i" access="read"/>
    <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
    <signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
    <signal name="StatusNotifierHostRegistered"/>
  </interface>
  <interface name="org.freedesktop.DBus.Properties">
    <method name="Get"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
    <method name="GetAll"><arg type="s" direction="in"/><arg type="a{sv}" direction="out"/></method>
  </interface>
  <interface name="org.freedesktop.DBus.Introspectable">
    <method name="Introspect"><arg type="s" direction="out"/></method>
  </interface>
</node>"""


def log(event, **fields):
    LOG.write(json.dumps({"event": event, "time": time.time(), **fields}) + "\n")
    LOG.flush()


class Watcher(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/StatusNotifierWatcher")
        self.bus, self.items = bus, []

    @dbus.service.method(dbus.INTROSPECTABLE_IFACE, in_signature="", out_signature="s")
    def Introspect(self):
        return WATCHER_XML

    @dbus.service.method(WATCHER, in_signature="s", out_signature="", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender=None):
        # Qt passes its own service name; others pass an object path on the sender.
        name = str(service) if not str(service).startswith("/") else str(sender)
        path = "/StatusNotifierItem" if not str(service).startswith("/") else str(service)
        self.items.append((name, path))
        log("item-registered", service=name, path=path)
        self.StatusNotifierItemRegistered(name)

    @dbus.service.method(WATCHER, in_signature="s", out_signature="")
    def RegisterStatusNotifierHost(self, service):
        pass

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, prop):
        return self.GetAll(interface)[prop]

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return {
            "RegisteredStatusNotifierItems": dbus.Array([n for n, _ in self.items], signature="s"),
            "IsStatusNotifierHostRegistered": dbus.Boolean(True),
            "ProtocolVersion": dbus.Int32(0),
        }

    @dbus.service.signal(WATCHER, signature="s")
    def StatusNotifierItemRegistered(self, service):
        pass

    @dbus.service.signal(WATCHER, signature="s")
    def StatusNotifierItemUnregistered(self, service):
        pass

    @dbus.service.signal(WATCHER, signature="")
    def StatusNotifierHostRegistered(self):
        pass

    def save_icon(self):
        """Reads the newest item's IconPixmap and ToolTip as a panel does, and saves the icon."""
        if not self.items:
            log("icon", error="no item registered")
            return
        name, path = self.items[-1]
        try:
            item = self.bus.get_object(name, path)
            props = dbus.Interface(item, dbus.PROPERTIES_IFACE)
            pixmaps = props.Get("org.kde.StatusNotifierItem", "IconPixmap")
            tooltip = props.Get("org.kde.StatusNotifierItem", "ToolTip")
            width, height, argb = max(pixmaps, key=lambda p: int(p[0]))
            width, height, data = int(width), int(height), bytes(argb)
            rgba = bytearray()
            for i in range(0, len(data), 4):  # network byte order ARGB
                a, r, g, b = data[i:i + 4]
                rgba += bytes((r, g, b, a))
            subprocess.run(["convert", "-size", f"{width}x{height}", "-depth", "8",
                            "rgba:-", ICON_PNG], input=bytes(rgba), check=True)
            centre = (height // 2 * width + width // 2) * 4
            log("icon", width=width, height=height, centre="#%02x%02x%02x" % tuple(rgba[centre:centre + 3]),
                tooltip=str(tooltip[2]) + " " + str(tooltip[3]), file=ICON_PNG)
        except Exception as error:  # the log says what went wrong; the test reads it
            log("icon", error=str(error))


class Notifications(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/org/freedesktop/Notifications")
        self.next_id = 1

    @dbus.service.method(NOTIFICATIONS, in_signature="", out_signature="as")
    def GetCapabilities(self):
        return ["body", "body-markup", "actions"]

    @dbus.service.method(NOTIFICATIONS, in_signature="", out_signature="ssss")
    def GetServerInformation(self):
        return ("fake-desktop", "test", "1.0", "1.2")

    @dbus.service.method(NOTIFICATIONS, in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, app, replaces, icon, summary, body, actions, hints, timeout):
        nid = int(replaces) or self.next_id
        self.next_id += 1
        log("notification", id=nid, app=str(app), summary=str(summary), body=str(body),
            desktop_entry=str(hints.get("desktop-entry", "")))
        return dbus.UInt32(nid)

    @dbus.service.method(NOTIFICATIONS, in_signature="u", out_signature="")
    def CloseNotification(self, nid):
        pass


LOG = open(sys.argv[1], "a")
ICON_PNG = sys.argv[2]
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
session = dbus.SessionBus()
names = [dbus.service.BusName(n, session, do_not_queue=True) for n in (WATCHER, NOTIFICATIONS)]
watcher = Watcher(session)
Notifications(session)
GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGUSR1, lambda: watcher.save_icon() or True)
GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGTERM, lambda: loop.quit() or False)
log("ready")
loop = GLib.MainLoop()
loop.run()
