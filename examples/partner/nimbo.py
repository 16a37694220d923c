#!/usr/bin/python3
# nimbo.py: a stand-in for NIMBO (signature NMB5) in Python with python-dbus. It owns
# NIMBO's bus name, answers "HOLA" with "OKHI" and "CALC" with "RSLT", logs every message
# (to the file $NIMBO_LOG, else standard output), and ends at "BYE " or SIGTERM.
import os
import signal
import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

INTERFACE, OBJECT = "org.vesk.AppleEvent1", "/org/vesk/App"
SELF = "NMB5"
LOG = open(os.environ["NIMBO_LOG"], "a") if os.environ.get("NIMBO_LOG") else sys.stdout


def bus_name(signature):  # "NMB5" -> "org.vesk.App.s4e4d4235"
    return "org.vesk.App.s" + signature.encode("mac_roman").hex()


def text(value):  # TEXT comes as a string, or as Mac Roman bytes
    return bytes(value).decode("mac_roman") if isinstance(value, dbus.Array) else str(value)


def send(to, *params):  # one message, sent without waiting for a reply
    app = bus.get_object(bus_name(to.ljust(4)), OBJECT, introspect=False)
    app.Event("VESK", "AEVT", SELF, [(key.ljust(4), "TEXT", value) for key, value in params],
              dbus_interface=INTERFACE, signature="sssa(ssv)", ignore_reply=True)


class Nimbo(dbus.service.Object):
    @dbus.service.method(INTERFACE, in_signature="sssa(ssv)", out_signature="i")
    def Event(self, event_class, event_id, sender, parameters):
        message = {str(key): text(value) for key, kind, value in parameters}
        msg, sign, xtra = message.get("MSSG", ""), message.get("SIGN", ""), message.get("XTRA", "")
        print(f'nimbo: {msg} from {sign} (XTRA "{xtra}")', file=LOG, flush=True)
        if msg == "HOLA":
            send(sign, ("MSSG", "OKHI"), ("SIGN", SELF), ("PSIG", SELF), ("XTRA", ""), ("NAME", "NIMBO (Python)"))
        elif msg == "CALC":
            send(sign, ("MSSG", "RSLT"), ("SIGN", SELF), ("PSIG", SELF), ("XTRA", xtra), ("PLUM", "plume of " + xtra))
        elif msg == "BYE ":
            loop.quit()
        return 0

    @dbus.service.method(INTERFACE, in_signature="", out_signature="")
    def Activate(self):
        print("nimbo: activate", file=LOG, flush=True)


DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
name = dbus.service.BusName(bus_name(SELF), bus, do_not_queue=True)  # before sending as NMB5
nimbo = Nimbo(bus, OBJECT)
loop = GLib.MainLoop()
GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGTERM, lambda: loop.quit() or False)
print(f"nimbo: running as pid {os.getpid()}", file=LOG, flush=True)
loop.run()
print("nimbo: stopped", file=LOG, flush=True)
