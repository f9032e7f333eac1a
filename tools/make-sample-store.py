#!/usr/bin/env python3
"""Writes samples/store: the small mail store the demo and the tests open.

Running it again gives the same files byte for byte, so the store in git can be
checked against it. Everything in it is invented; addresses use the example domains.

Usage: tools/make-sample-store.py [destination]   (default: samples/store beside this script)
"""

import datetime
import email.utils
import pathlib
import plistlib
import shutil
import sys

ACCOUNTS = {
    # folder: (display name, type, server path prefix, owner's address, mailboxes)
    "Home": ("Home", "POP", "", "Sam Rivera <sam.rivera@example.net>", [
        "Inbox", "Sent", "Drafts", "Trash", "Junk", "Archive",
        "Family", "Receipts", "Travel", "Travel/2026",
    ]),
    "Work": ("Work", "POP", "", "Sam Rivera <sam.rivera@example.com>", [
        "Inbox", "Sent", "Drafts", "Trash", "Junk", "Archive",
        "Projects", "Projects/Apollo", "Projects/Old", "Projects/Old/Apollo",
        "Clients", "Clients/Northwind", "Clients/Northwind/Archive", "Clients/Harbor Lights",
    ]),
    "Lists": ("Lists", "IMAP", "INBOX", "Sam Rivera <sam@example.org>", [
        "INBOX", "INBOX/Lists", "INBOX/Lists/GNUstep", "INBOX/Lists/Debian", "INBOX/Newsletters",
        "Sent", "Trash",
    ]),
}

# (account, mailbox, sender, subject, date "YYYY-MM-DD HH:MM", body). In "Sent" and
# "Drafts" the sender is the owner and the named person is the recipient.
MESSAGES = [
    ("Home", "Inbox", "Maria Rivera <maria.rivera@example.net>", "Sunday lunch at Grandma's", "2026-03-06 18:42",
     "Grandma says one o'clock, and could you bring the lemon cake?"),
    ("Home", "Inbox", "Northbank Utilities <billing@example.net>", "Your March statement is ready", "2026-03-07 07:05",
     "Your statement for March is ready to view. Amount due: 64.20."),
    ("Home", "Inbox", "Jon Park <jon.park@example.org>", "Bike ride Saturday?", "2026-03-08 21:17",
     "Thinking of the river loop, about 40 km. Leave at nine?"),
    ("Home", "Inbox", "City Library <notices@library.example.org>", "Items due soon", "2026-03-09 06:30",
     "Two items on your card are due on 14 March."),
    ("Home", "Sent", "Maria Rivera <maria.rivera@example.net>", "Re: Sunday lunch at Grandma's", "2026-03-06 19:03",
     "One o'clock is fine. Cake is in hand."),
    ("Home", "Drafts", "Jon Park <jon.park@example.org>", "Garden plans", "2026-03-05 22:10",
     "Half-written: tomatoes along the fence, beans by the shed..."),
    ("Home", "Trash", "Sock Emporium <deals@shop.example.com>", "Limited offer: 50% off socks", "2026-02-27 10:00",
     "This weekend only."),
    ("Home", "Junk", "Prize Office <prize@winner.example.net>", "You have won a cruise!!!", "2026-03-01 03:14",
     "Claim your cruise now by sending your bank details."),
    ("Home", "Archive", "Harbour Insurance <renewals@insurance.example.com>", "Car insurance renewal", "2025-11-20 09:00",
     "Your policy renews on 1 December. No action is needed."),
    ("Home", "Archive", "Zoë Martín <zoe.martin@example.org>", "Tax documents 2025", "2026-01-15 16:45",
     "Here are the forms we talked about. Ring me if anything is unclear."),
    ("Home", "Family", "Maria Rivera <maria.rivera@example.net>", "Photos from the reunion", "2026-02-02 20:31",
     "Forty-two photos, most of them of the dog."),
    ("Home", "Family", "Ana Rivera <ana.rivera@example.net>", "Dad's birthday present", "2026-02-19 12:08",
     "Shall we all chip in for the telescope?"),
    ("Home", "Family", "Ana Rivera <ana.rivera@example.net>", "School play on Friday", "2026-03-03 08:15",
     "Leo is a tree in the second act. Seats at six."),
    ("Home", "Receipts", "Parcel Desk <orders@shop.example.com>", "Your order #10482 has shipped", "2026-02-11 14:22",
     "Your order is on its way and should arrive on Thursday."),
    ("Home", "Receipts", "Bean & Bloom <receipts@coffee.example.com>", "Receipt for your coffee beans", "2026-02-24 09:41",
     "1 kg Ethiopia Guji, 18.50. Thank you!"),
    ("Home", "Receipts", "Coastline Rail <tickets@rail.example.net>", "Train ticket receipt", "2026-03-02 17:55",
     "Return ticket, coach C, seat 42."),
    ("Home", "Travel", "Casa Azul Hotel <bookings@hotel.example.com>", "Hotel booking confirmation - Lisbon", "2025-09-14 11:30",
     "Three nights from 2 October, double room, breakfast included."),
    ("Home", "Travel", "Skyway Air <itinerary@air.example.com>", "Flight itinerary changed", "2025-09-28 05:12",
     "Your departure moves from 07:40 to 08:25."),
    ("Home", "Travel/2026", "Island Ferries <timetable@ferry.example.net>", "Ferry times for August", "2026-03-04 13:00",
     "Summer sailings leave every two hours from 07:00."),
    ("Home", "Travel/2026", "Jon Park <jon.park@example.org>", "Packing list", "2026-03-08 22:40",
     "Tent, stove, two maps, far too many socks."),
    ("Work", "Inbox", "Priya Natarajan <priya.natarajan@example.com>", "Weekly status: Apollo", "2026-03-09 08:02",
     "Green across the board. The API freeze is on Wednesday."),
    ("Work", "Inbox", "Office Team <office@example.com>", "Lunch and learn on Thursday", "2026-03-09 09:30",
     "Tom will talk about the new build farm. Sandwiches provided."),
    ("Work", "Inbox", "Expenses <expenses@example.com>", "Expense report approved", "2026-03-09 10:47",
     "Report EXP-2231 was approved and will be paid on the 15th."),
    ("Work", "Sent", "Priya Natarajan <priya.natarajan@example.com>", "Re: Weekly status: Apollo", "2026-03-09 08:20",
     "Thanks, I will update the release notes today."),
    ("Work", "Trash", "Office Team <office@example.com>", "Parking garage closed Monday", "2026-02-20 16:00",
     "Resurfacing work; please use the north lot."),
    ("Work", "Archive", "Human Resources <hr@example.com>", "Your 2025 review summary", "2025-12-18 15:30",
     "Your review summary is attached for your records."),
    ("Work", "Projects/Apollo", "Tom Becker <tom.becker@example.com>", "Apollo launch checklist", "2026-03-05 11:11",
     "Draft checklist for the launch; comments welcome by Friday."),
    ("Work", "Projects/Apollo", "Priya Natarajan <priya.natarajan@example.com>", "Re: Apollo API review", "2026-03-06 14:36",
     "Agreed on renaming the endpoints; the rest can wait."),
    ("Work", "Projects/Old/Apollo", "Tom Becker <tom.becker@example.com>", "Apollo 2019 retrospective notes", "2019-06-28 17:20",
     "What went well, what did not, and the coffee machine incident."),
    ("Work", "Clients/Northwind", "Lena Holm <lena.holm@northwind.example.net>", "Contract renewal", "2026-02-26 10:05",
     "We would like to renew for two years. Can we meet next week?"),
    ("Work", "Clients/Northwind", "Lena Holm <lena.holm@northwind.example.net>", "Meeting notes 3 March", "2026-03-03 16:50",
     "Notes attached; action items are at the bottom."),
    ("Work", "Clients/Northwind/Archive", "Lena Holm <lena.holm@northwind.example.net>", "Kick-off agenda", "2024-04-08 09:00",
     "Agenda for our first meeting."),
    ("Work", "Clients/Harbor Lights", "Omar Haddad <omar@harborlights.example.org>", "Quote for the signage project", "2026-03-02 12:12",
     "Please find our quote below. Valid for thirty days."),
    ("Lists", "INBOX", "Lists Admin <admin@lists.example.org>", "Welcome to your mailbox", "2026-01-02 09:00",
     "Your list subscriptions are filed into folders under INBOX."),
    ("Lists", "INBOX/Lists/GNUstep", "Ada Brooks <ada.brooks@example.org>", "[gnustep] Menu delegate called twice", "2026-03-01 19:22",
     "Setting a delegate calls menuNeedsUpdate: at once. Is that intended?"),
    ("Lists", "INBOX/Lists/GNUstep", "Kwame Mensah <kwame@example.net>", "Re: [gnustep] Menu delegate called twice", "2026-03-02 07:48",
     "Yes; code that rebuilds a menu should expect it."),
    ("Lists", "INBOX/Lists/GNUstep", "Ada Brooks <ada.brooks@example.org>", "[gnustep] Building with clang", "2026-03-07 21:05",
     "Notes on building with clang and the GCC run-time."),
    ("Lists", "INBOX/Lists/Debian", "Release Team <release@lists.example.org>", "[debian-user] Point release this weekend", "2026-03-05 12:00",
     "Mirrors will update on Saturday."),
    ("Lists", "INBOX/Lists/Debian", "Hugo Lefèvre <hugo.lefevre@example.net>", "[debian-user] Xvfb and screenshots", "2026-03-08 15:33",
     "import -window root works once the run loop has turned."),
    ("Lists", "INBOX/Newsletters", "The Weekly Byte <news@byte.example.com>", "This week: small tools, big wins", "2026-03-06 06:00",
     "Five small command-line tools worth knowing."),
    ("Lists", "INBOX/Newsletters", "Garden Post <letters@garden.example.org>", "March: time to sow", "2026-03-01 06:00",
     "Peas, broad beans and sweet peas can go in now."),
    ("Lists", "Sent", "Ada Brooks <ada.brooks@example.org>", "Re: [gnustep] Building with clang", "2026-03-07 22:15",
     "Thanks, that saved me an evening."),
]


def mailbox_folder(account_folder, relative_path):
    folder = account_folder
    for name in relative_path.split("/"):
        folder = folder / (name + ".mbox")
    return folder


def message_text(owner, row, number):
    account, mailbox, person, subject, when, body = row
    date = datetime.datetime.strptime(when, "%Y-%m-%d %H:%M").replace(tzinfo=datetime.timezone.utc)
    sender, recipient = (owner, person) if mailbox in ("Sent", "Drafts") else (person, owner)
    slug = mailbox.lower().replace("/", ".").replace(" ", "-")
    return (f"From: {sender}\nTo: {recipient}\nSubject: {subject}\n"
            f"Date: {email.utils.format_datetime(date)}\n"
            f"Message-ID: <{date:%Y%m%d%H%M}.{number}.{slug}@{account.lower()}.example.com>\n\n{body}\n")


def write_store(store):
    if store.exists():
        shutil.rmtree(store)
    for folder, (name, kind, prefix, owner, mailboxes) in ACCOUNTS.items():
        account_folder = store / folder
        account_folder.mkdir(parents=True)
        settings = {"DisplayName": name, "AccountType": kind, "ServerPathPrefix": prefix}
        (account_folder / "Account.plist").write_bytes(plistlib.dumps(settings, fmt=plistlib.FMT_XML))
        for mailbox in mailboxes:
            (mailbox_folder(account_folder, mailbox) / "Messages").mkdir(parents=True)
    counts = {}
    for row in MESSAGES:
        account, mailbox = row[0], row[1]
        number = counts[(account, mailbox)] = counts.get((account, mailbox), 0) + 1
        messages = mailbox_folder(store / account, mailbox) / "Messages"
        (messages / f"{number}.eml").write_text(message_text(ACCOUNTS[account][3], row, number), encoding="utf-8")
    # Git keeps no empty folders: an empty mailbox keeps its Messages folder with a marker.
    for messages in store.rglob("Messages"):
        if not any(messages.iterdir()):
            (messages / ".keep").write_bytes(b"")


if __name__ == "__main__":
    default = pathlib.Path(__file__).resolve().parent.parent / "samples" / "store"
    write_store(pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else default)
