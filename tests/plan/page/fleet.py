"""Made-up recordings of servers; the third and those behind it are odd in their own ways."""

import json
import os

PERIOD = 300
HOSTILE = '"><script>alert(1)</script>\u202e\u200b'
USUAL = {"numproc": 400, "numtcpsock": 120, "numothersock": 500, "numfile": 4000,
         "privvmpages": 900000, "lockedpages": 100, "shmpages": 9000, "numflock": 40,
         "numiptent": 30, "diskspace": 50000000, "diskinodes": 900000}


HARDWARE = {"cpus": 8, "memory_kib": 24 * 2**20, "swap_kib": 2 * 2**20, "boot_id": "b0",
            "file_systems": [{"mount_point": "/", "size_kib": 40 * 2**20, "inodes": 2621440},
                             {"mount_point": "/srv", "size_kib": 2**30, "inodes": 65536}]}


def usage(size, busy, total):
    """What a server of the given size uses: memory and tasks as busy as it is, and totals that have grown by `total`
    seconds of a processor since it was started."""
    return {"uptime_ms": 10**7 + total["passes"] * PERIOD * 1000, "tasks": int(500 * size * busy),
            "memory_kib": int(2**21 * size * busy), "swap_kib": int(2**10 * size * busy), "shm_kib": 64,
            "cpu_ms": int(total["busy"] * size * PERIOD * 1000), "runnable": 2,
            "disk_read_bytes": 2**20 * PERIOD * total["passes"], "disk_written_bytes": 2**19 * PERIOD * total["passes"],
            "disk_operations": 50 * PERIOD * total["passes"], "net_received_bytes": int(total["busy"] * 2**20 * PERIOD),
            "net_sent_bytes": int(total["busy"] * 2**21 * PERIOD)}


def recording(host, size, passes, hole=range(0), is_whole=True):
    """The lines of a recording; the passes whose numbers are in the hole were not taken. One that is not whole was ended
    early by an older program, which took no usage. A server of the given size counts what is usual and up to a half
    more, and once three times as much; so it is with what it uses."""
    total = {"busy": 0, "passes": 0}
    yield {"recording_format": 1, "version": "1.0", "host": host, "machine": "x86_64",
           "kernel": "5.10.0-28-amd64", "page_size": 4096, "start": "2026-03-02T06:00:00Z",
           "scan_time": (passes - 1) * PERIOD, "scan_period": PERIOD,
           **({"hardware": HARDWARE} if is_whole else {})}
    for number in range(1, passes + 1):
        busy = 3 if number == passes * 2 // 3 - host.startswith("node2.") else 1 + number % 6 / 10
        total = {"busy": total["busy"] + busy, "passes": number}
        if number not in hole:
            yield {"pass": number, "at_ms": (number - 1) * PERIOD * 1000, "took_ms": 131,
                   "counts": {name: int(usual * size * busy) for name, usual in USUAL.items()},
                   **({"usage": usage(size, busy, total)} if is_whole else {})}
    findings = {"quotaugidlimit": 0, "interfaces": [], "distribution": "debian-12", "hostname": host,
                "search_domains": [{"hex": "4af9ff"}] if host == HOSTILE else ["example.org", "x" * 200],
                "nameservers": ["192.0.2.53"], "warnings": [],
                "excludes": [{"flag": False, "path": "/proc/*"}], "nfs": False, "reiserfs": False,
                "failures": [], "messages": ""}
    yield {"at_ms": (passes - 1) * PERIOD * 1000, "interrupted": not is_whole, "findings": findings}


def write_fleet(folder, servers, passes):
    os.makedirs(folder)
    for number in range(1, servers + 1):
        path = os.path.join(folder, f"node{number}")
        host = HOSTILE if number == 3 else "node6" if number == 6 else f"node{number}.example.org"
        size = 1 if number == 4 else 0.3 + number * 37 % 100 / 50
        hole = range(passes // 10, passes // 5) if number == 4 else range(0)
        if number == 5:
            with open(path + ".failed", "w", encoding="utf-8") as file:
                file.write("Error running 'df -k -l':\ndf: /mnt: Transport endpoint is not connected\n")
        else:
            with open(path + ".jsonl", "w", encoding="utf-8") as file:
                file.writelines(json.dumps(line) + "\n" for line in recording(host, size, passes, hole, number != 6))
