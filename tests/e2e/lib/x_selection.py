#!/usr/bin/env python3
"""Prints the owner window of an X selection (e.g. _NET_WM_CM_S0, held by a running compositor) and
exits 0, or exits 1 when nobody owns it."""
import ctypes
import sys

x11 = ctypes.cdll.LoadLibrary("libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
x11.XInternAtom.restype = ctypes.c_ulong
x11.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
x11.XGetSelectionOwner.restype = ctypes.c_ulong
x11.XGetSelectionOwner.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
display = x11.XOpenDisplay(None)
if not display:
    sys.exit(2)
owner = x11.XGetSelectionOwner(display, x11.XInternAtom(display, sys.argv[1].encode(), 0))
print(hex(owner))
sys.exit(0 if owner else 1)
