"""Made-up recordings: fleet.py FOLDER SERVERS PASSES. Every fifth server is odd in its own way."""

import json
import math
import os
import random
import sys

PERIOD = 300
HOSTILE = '"><script>alert(1)</script>'
USUAL = {"numproc": 400, "numtcpsock": 120, "numothersock": 500, "numfile": 4000,
         "privvmpages": 900000, "lockedpages": 100, "shmpages": 9000, "numflock": 40,
         "numiptent": 30, "diskspace": 50000000, "diskinodes": 900000}
GROWING = ("diskspace", "diskinodes")


def counts(chance, size, number, passes):
    """What a server of the given size counts: busier by day, and three times as busy once."""
    day = 1 + 0.4 * math.sin(number / 288 * 2 * math.pi) * chance.random()
    burst = 3 if number == passes * 2 // 3 else day
    return {name: int(usual * size * (1 + number / 10000 if name in GROWING else burst))
            for name, usual in USUAL.items()}


def findings(host):
    return {"quotaugidlimit": 0, "interfaces": [], "distribution": "debian-12", "hostname": host,
            "nameservers": ["192.0.2.53"], "search_domains": ["example.org"], "warnings": [],
            "excludes": [{"flag": False, "path": "/proc/*"}, {"flag": False, "path": "/sys/*"}],
            "nfs": False, "reiserfs": False, "failures": [], "messages": ""}


def recording(host, size, passes, hole=range(0)):
    """The lines of a recording; the passes whose numbers are in the hole were not taken."""
    yield {"recording_format": 1, "version": "1.0", "host": host, "machine": "x86_64",
           "kernel": "5.10.0-28-amd64", "page_size": 4096, "start": "2026-03-02T06:00:00Z",
           "scan_time": (passes - 1) * PERIOD, "scan_period": PERIOD}
    chance = random.Random(host)
    for number in range(1, passes + 1):
        taken = counts(chance, size, number, passes)
        if number not in hole:
            yield {"pass": number, "at_ms": (number - 1) * PERIOD * 1000, "took_ms": 131,
                   "counts": taken}
    yield {"at_ms": (passes - 1) * PERIOD * 1000, "interrupted": False, "findings": findings(host)}


def write(path, lines):
    with open(path, "w", encoding="utf-8") as file:
        file.writelines(json.dumps(line) + "\n" for line in lines)


def write_fleet(folder, servers, passes):
    os.makedirs(folder, exist_ok=True)
    for number in range(1, servers + 1):
        host = HOSTILE if number == 3 else f"node{number}.example.org"
        path = os.path.join(folder, f"node{number}.jsonl")
        lines = list(recording(host, 0.3 + number * 37 % 100 / 50, passes))
        if number % 5 == 4:
            lines = list(recording(host, 1, passes, range(passes // 10, passes // 5)))
        if number % 10 == 5:
            with open(path.replace(".jsonl", ".failed"), "w", encoding="utf-8") as file:
                file.write("Error running 'df -k -l':\ndf: /mnt: Transport endpoint is not connected\n")
            continue
        if number % 10 == 0:
            lines = lines[:passes // 2]  # no last line: it still goes on, or was killed
        write(path, lines)


if __name__ == "__main__":
    write_fleet(sys.argv[1], int(sys.argv[2]), int(sys.argv[3]))
