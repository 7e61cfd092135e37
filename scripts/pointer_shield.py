#!/usr/bin/python3
"""Keeps the pointer of an X server out of every window: lays a pane over the screen that is not seen, and keeps it on top.

A program under Wine that moves the cursor moves the X pointer too. X then tells whatever window is there, and the
program of that window sets the cursor to where the pointer was when X said so. If the cursor has been moved on
meanwhile, the next click lands where the last one did. Only the pane is told here, and it does nothing.

Prints "ready" once the pane is in place, and runs until the X server or somebody ends it.
"""

from Xlib import X, display, error

try:
    server = display.Display()
    root = server.screen().root
    size = root.get_geometry()
    pane = root.create_window(0, 0, size.width, size.height, 0, 0, X.InputOnly, override_redirect=True)
    root.change_attributes(event_mask=X.SubstructureNotifyMask)
    pane.set_wm_name("pointer shield")
    pane.map()
    server.sync()
    print("ready", flush=True)
    while True:
        event = server.next_event()
        if event.type in (X.MapNotify, X.ConfigureNotify) and event.window != pane:
            pane.configure(stack_mode=X.Above)
except error.ConnectionClosedError:
    pass
