#!/usr/bin/env python3
"""Writes plistlib-written.plist: a data file made by another property-list
writer, holding every value type the store must keep, with nested unknown keys.
Run it again only to change the fixture; the tests read the committed file."""
import datetime
import plistlib

data = {
    "TidyFrequency": 4,
    "GrowlFileMoved": True,
    "GrowlOnEmpty": 0,
    "LastTidy": datetime.datetime(2024, 2, 29, 23, 59, 58),
    "ShadowDesktopPath": "/home/jens/Shadow & <Desk>",
    "IgnoreFiles": {"/home/jens/Desktop/keep me.txt": True, "/home/jens/Desktop/off": False},
    "KVBrevanoSaveData": {"Enabled": True, "Locations": ["/home/jens/Desktop"], "Rules": [{"Name": "r"}]},
    "UnknownNested": {
        "negative": -42,
        "int64min": -(2 ** 63),
        "uint64max": 2 ** 64 - 1,
        "real": 0.1,
        "tiny": 5e-324,
        "big": 1.7976931348623157e308,
        "data": bytes(range(256)),
        "empty data": b"",
        "dates": [datetime.datetime(1, 1, 1), datetime.datetime(4001, 1, 1), datetime.datetime(1969, 7, 20, 20, 17, 40)],
        "deeper": {"list": [[], {}, "", "ünïcödé 😀", "tab\tand\nnewline"]},
    },
}
with open("plistlib-written.plist", "wb") as f:
    plistlib.dump(data, f, fmt=plistlib.FMT_XML)
