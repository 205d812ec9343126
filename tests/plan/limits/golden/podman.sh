# limits for what db1.example.org carries, by tarnhwplan 1.0
# coverage: 5 of 5, complete: 5 of 5 passes, longest gap 0:05:00
# usage: in 5 of 5 passes
# page cache is not in the limit of memory: it is given back under pressure
# processors are averages over a period of 5 minutes, which hides shorter bursts

# For bash: read this file with ".", then
#   podman run "${limits[@]}" --rootfs DIRECTORY COMMAND
# or the same options with docker run and an image.
limits=(
# peak of 1.2 GiB, 2026-03-12 14:15 UTC, pass 3, times 1.2
    --memory=1447m
# memory and 0 MiB of swap; peak of 0 bytes, 2026-03-12 14:05 UTC, pass 1, times 1.2
    --memory-swap=1447m
# peak of 1,503 tasks, 2026-03-12 14:10 UTC, pass 2, times 1.2
    --pids-limit=1804
# 95th percentile of 4 values: 2.00 cores, times 1.2, 1,024 for each core
    --cpu-shares=2458
# peak of 2.00 cores, 2026-03-12 14:20 UTC, pass 4, times 1.2
    --cpus=2.4
# peak of 5,000 descriptors of one process (mysqld), 2026-03-12 14:20 UTC, pass 4, times 1.2
    --ulimit=nofile=6000:524288
# at least 8 MiB; peak of 4.0 MiB of one process (my\nsql), 2026-03-12 14:05 UTC, pass 1, times 1.2
    --ulimit=memlock=8388608:8388608
# peak of 97.7 MiB, 2026-03-12 14:25 UTC, pass 5
    --shm-size=98m
# HOSTNAME
    --hostname=db1.example.org
# NAMESERVER
    --dns=192.0.2.53
# SEARCHDOMAIN
    --dns-search=example.org
# The server has NFS mounts. They are among these, which are not to be copied (network, removable,
#   loop and bind mounts): bind those that the container needs.
#    --volume='/mnt/My 50% [old] \ "Data":/mnt/My 50% [old] \ "Data"'
)

# disk: 7,500,000 KiB (7.2 GiB), at most 8,250,000 KiB (7.9 GiB); DISKSPACE, times 1.5, a tenth in
#   reserve
# inodes: 300,000, at most 330,000; DISKINODES, times 1.5, a tenth in reserve
# addresses, decide yourself which of them move: 192.0.2.10 2001:db8::10
# Lines of the calculator's configuration that have no equivalent here:
# AVNUMPROC, NUMTCPSOCK, NUMOTHERSOCK, NUMPTY, NUMFLOCK, NUMSIGINFO, NUMIPTENT, SLMMODE: nothing
#   today limits that
# NUMFILE, LOCKEDPAGES: limited for each process, not for all together
# DCACHESIZE, KMEMSIZE, TCPSNDBUF, TCPRCVBUF, OTHERSOCKBUF, DGRAMRCVBUF, SHMPAGES: part of the limit
#   of memory
# PRIVVMPAGES, VMGUARPAGES, OOMGUARPAGES: memory really used is limited, not virtual sizes
# DISKSPACE, DISKINODES: give the container a file system of that size
# QUOTATIME, QUOTAUGIDLIMIT: up to the container's own file system
# DISTRIBUTION: in the files of the copy itself
# #IP_ADDRESS: given with the container's network
