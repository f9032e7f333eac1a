#!/usr/bin/env python3
"""Writes the fuzzers' seed files: real-shaped preferences and recent-items lists, each as
XML and as a binary list, the two forms a Mac writes, and a few days for the day fuzzer in
the byte form DayFuzzer.mm reads. Run again after changing it; the output is the same every
time."""
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


# The day fuzzer's steps, numbered as its table lists them, and the settings' bytes.
TRANSFER, SPECIAL_TRANSFER, OTHER_DELEGATE = 0, 7, 9
OPENING, CHOICE, RENAME, DELETION, NEW_MAILBOX = 11, 16, 22, 24, 25
ACCOUNTS, FRONT_VIEWER, CLOCK, RELAUNCH = 27, 28, 29, 31
XML, BINARY, NO_FILE = 0x20, 0x10, 0x00  # with the sort type in the low three bits
EXCLUDE = 0x08
CLEAR = 0xF0  # a choice's item byte that picks "Clear Menu"
REOPEN, FROM_LAST_SHOWN, WITH_MESSAGES = 0, 1, 2  # a choice's last byte


def day(limit, settings, clock, accounts, records, steps):
    """limit: 0 to 49 for 1 to 50, 250 for 500; accounts: (kind, 16-bit mask of paths);
    records: (mailbox, how, when); steps: (step, arguments...)."""
    out = [limit, settings, clock, len(accounts) - 1]
    for kind, mask in accounts:
        out += [kind, mask & 0xFF, mask >> 8]
    out.append(len(records))
    for record in records:
        out += list(record)
    for step in steps:
        out += list(step)
    return bytes(out)


def transfers(destinations, move=False):
    return [(TRANSFER, 0, destination, 4 if move else 0) for destination in destinations]


def openings():
    return [(OPENING, family) for family in range(5)]


# Account kinds and paths as the fuzzer's pools list them: 0 "Home" (POP), 1 "Home" (IMAP),
# 2 "Office", 3 "Home/Work", 5 "Café" composed, 6 "Café" decomposed, 7 "".
EVERY_PATH = 0xFFFF
DAYS = {
    "namesakes-by-name": day(9, XML | EXCLUDE | 0, 0, [(0, EVERY_PATH), (1, 0x06C9), (2, 0x0619)], [(3, 1, 0), (7, 2, 9)],
                             transfers(range(0, 40, 3)) + openings()
                             + [(CHOICE, 0, 1, REOPEN), (CHOICE, 1, 2, WITH_MESSAGES), (CHOICE, 2, 0, REOPEN),
                                (CHOICE, 3, 3, WITH_MESSAGES | 4), (CHOICE, 4, 1, REOPEN), (RELAUNCH,), (OPENING, 0),
                                (CHOICE, 0, CLEAR, REOPEN), (OPENING, 1)]),
    "evictions-by-date": day(4, BINARY | EXCLUDE | 1, 3, [(0, EVERY_PATH), (6, 0x00F8)], [(1, 0x21, 0x10), (2, 0x42, 0x23)],
                             sum(([(TRANSFER, 1, d, 0), (CLOCK, 6)] for d in range(0, 30, 4)), [])
                             + [(CLOCK, 8), (TRANSFER, 0, 0x81, 0), (OPENING, 2), (CHOICE, 2, 0, REOPEN),
                                (FRONT_VIEWER, 1), (CHOICE, 2, 1, REOPEN), (RELAUNCH,), (OPENING, 1)]),
    "odd-names-by-use": day(2, XML | 2, 1, [(3, 0x00FF), (0, 0x8181), (7, 0x7801), (5, 0x0078)], [(255, 0x05, 0), (4, 0x83, 0x31)],
                            transfers(range(1, 25, 2)) + [(OPENING, 0), (RENAME, 2, 7), (CHOICE, 0, 1, FROM_LAST_SHOWN),
                                                          (DELETION, 3), (CHOICE, 1, 0, FROM_LAST_SHOWN), (OPENING, 3),
                                                          (ACCOUNTS, 1), (OPENING, 4), (ACCOUNTS, 1), (NEW_MAILBOX, 0, 7),
                                                          (TRANSFER, 0, 0x81, 0), (OPENING, 0), (RELAUNCH,), (OPENING, 2)]),
    "viewers-and-delegates-at-500": day(250, NO_FILE | 3, 4, [(1, EVERY_PATH), (2, 0x0F0F)], [],
                                        [(SPECIAL_TRANSFER, 3, 0), (OTHER_DELEGATE, 5, 8), (OTHER_DELEGATE, 6, 0)]
                                        + transfers(range(0, 60, 5), move=True)
                                        + [(FRONT_VIEWER, 2), (OPENING, 1), (CHOICE, 0, 2, WITH_MESSAGES), (CHOICE, 2, 4, REOPEN),
                                           (FRONT_VIEWER, 0), (CHOICE, 3, 5, WITH_MESSAGES), (CLOCK, 9), (RELAUNCH,)]),
}


def write_day(name, data):
    folder = os.path.join(HERE, "corpus", "day")
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as out:
        out.write(data)


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
    for name, data in DAYS.items():
        write_day(name, data)


if __name__ == "__main__":
    main()
