#!/usr/bin/env python3
"""Writes a large Brevano.data: N ignore-list entries and the default quick
filters, as a long-used installation might have. Usage: make_data_file.py N OUT"""
import datetime
import plistlib
import sys

n, out = int(sys.argv[1]), sys.argv[2]
ignored = {f"/home/jens/Desktop/item {i:06d} with a longer name.txt": True for i in range(n)}
filters = [{"Name": f"Filter {i}", "UID": f"{i:08X}-0000-4000-8000-000000000000", "Style": 0,
            "FileExtensions": ["jpg", "png", "pdf", "txt", "zip"] * 4} for i in range(50)]
data = {"IgnoreFiles": ignored, "QuickFilters": filters, "TidyFrequency": 4,
        "LastTidy": datetime.datetime(2026, 11, 21, 9, 0, 0),
        "KVBrevanoSaveData": {"Enabled": True, "Locations": ["/home/jens/Desktop"], "Rules": []}}
with open(out, "wb") as f:
    plistlib.dump(data, f)
