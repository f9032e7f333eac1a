#!/usr/bin/env python3
"""Writes the fuzzers' seed files: real-shaped preferences and recent-items lists, each as
XML and as a binary list, the two forms a Mac writes. Run again after changing it; the
output is the same every time."""
import os
import plistlib
import random

HERE = os.path.dirname(os.path.abspath(__file__))
DATE = "2024-03-01 09:15:00 +0000"


def record(path, accesses, date=DATE, date_key="Date"):
    return {"Accesses": accesses, date_key: date, "FullPath": path}


# Paths name the fuzz store's mailboxes ("Home/Work" is in two accounts), plus one that is gone.
PREFERENCES = {
    "by-name": {
        "SortType": 0,
        "ExcludeSpecialMailboxes": True,
        "RecentMailboxes": [
            record("Home/Work", 4),
            record("Home/Projects/Old", 2, "2024-02-11 18:40:12 +0100"),
            record("Office/INBOX/Archive/2023", 9, "2023-12-24 07:00:00 -0500"),
            record("Home/Receipts", 1),
            record("Home/Inbox", 3, "2024-03-02 10:00:00 +0000"),
        ],
    },
    "by-use-old-keys": {
        "SortType": 2,
        "ExcludeSpecialMailboxes": False,
        "RecentMailboxes": [
            record("Office/INBOX/Work", 7, date_key="CalendarDate"),
            {"FullPath": "Home/Sent"},
            record("Home/Deleted Long Ago", 12),
            record("Office/INBOX", "5"),
            record("Home/Projects", 7, "not a date"),
        ],
    },
    "odd-values": {
        "SortType": "2",
        "ExcludeSpecialMailboxes": 2,
        "RecentMailboxes": [record("Home/Work", -3), "Home/Work", {"FullPath": 42}, []],
    },
    "no-list": {"SortType": 1},
}


def bookmark(rng, name):
    return b"book" + bytes(rng.randrange(256) for _ in range(400)) + name.encode()


def items(rng, names):
    return [{"Name": name, "Bookmark": bookmark(rng, name)} for name in names]


def recent_items():
    rng = random.Random(1)
    return {
        "mac": {
            "RecentApplications": {"MaxAmount": 10, "CustomListItems": items(rng, ["Mail", "Safari"])},
            "RecentDocuments": {"MaxAmount": 10, "CustomListItems": items(rng, ["Notes.txt", "Budget.numbers", "Trip.pdf"])},
            "RecentServers": {"MaxAmount": 10, "CustomListItems": []},
        },
        "documents-only": {"Documents": {"MaxAmount": 5}},
        "max-amount-as-text": {"RecentDocuments": {"MaxAmount": "15"}},
        "no-max-amount": {"RecentDocuments": {"CustomListItems": []}, "Documents": {"MaxAmount": 20}},
    }


def write(target, name, plist):
    folder = os.path.join(HERE, "corpus", target)
    os.makedirs(folder, exist_ok=True)
    for suffix, fmt in (("xml", plistlib.FMT_XML), ("bplist", plistlib.FMT_BINARY)):
        with open(os.path.join(folder, f"{name}.{suffix}"), "wb") as out:
            out.write(plistlib.dumps(plist, fmt=fmt, sort_keys=True))


def main():
    for name, plist in PREFERENCES.items():
        write("preferences", name, plist)
    for name, plist in recent_items().items():
        write("recent-items", name, plist)


if __name__ == "__main__":
    main()
