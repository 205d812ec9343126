# The memory scan: threads shown as processes, text of programs and libraries, kernel threads, files that vanish or are
# torn, and the cap at the machine's memory.

# Two without a parent, of different residence: 10000 - 100 - 2000 and 3 KiB; the second has no PPid line at all.
process 1001 PPid=0 VmLck=67 VmSize=10000 VmRSS=800 VmExe=100 VmLib=2000
process 1002 VmRSS=1 VmSize=3
# Three threads of 1001 count once: 40000.
for pid in 1011 1012 1013; do process $pid PPid=1001 VmRSS=1200 VmSize=40000 VmLck=5000; done
# One of three that differs makes them processes: 3 x 100000.
for pid in 1021 1022; do process $pid PPid=1002 VmRSS=1200 VmSize=100000 VmLck=1000; done
process 1023 PPid=1002 VmRSS=1204 VmSize=100000 VmLck=1000
# More text than size: -400.
process 1031 PPid=1011 VmRSS=5 VmSize=100 VmExe=500
# Kernel threads have no such lines; a torn file, a key without a value and one that does not begin its line are 0.
for pid in 1041 1042; do process $pid PPid=2; done
put /proc/1051/status $'Name:\tp1051\nPPid:\t1012\nVmSize:\n VmLck:\t99999 kB\nVmSi'
# Ended meanwhile, unreadable, and no processes at all.
mkdir -p /proc/1061 /proc/1062/status /proc/1063
rows 0 /proc/1063/status
for name in 123abc 0x10 net; do put /proc/$name/status $'PPid:\t77\nVmSize:\t9999999 kB'; done

# 10000 - 2100 + 3 + 40000 + 300000 - 400 = 347503 KiB, 86875 pages; 67 + 5000 + 3000 = 8067 KiB locked, 2016 pages.
memory=(PRIVVMPAGES=104250:114675 VMGUARPAGES=104250:2147483647 OOMGUARPAGES=104250:2147483647 LOCKEDPAGES=2419:2419
    SLMMEMORYLIMIT=704674112:704674112)
config "${memory[@]}"
run 0

# 2000000000 KiB more: the private pages stop at the machine's own number of pages, the locked ones (500002016) do not.
process 1071 PPid=1031 VmRSS=9 VmSize=2000000000 VmLck=2000000000
single='sub single { unpack "f", pack "f", shift }'
private=$(perl -e "$single"' printf "%d", single(single(shift) * single(1.2))' "$(getconf _PHYS_PAGES)")
limit=$(perl -e "$single"' printf "%d", single(single(shift) * single(1.1))' "$private")
config PRIVVMPAGES=$private:$limit VMGUARPAGES=$private:2147483647 OOMGUARPAGES=$private:2147483647 \
    LOCKEDPAGES=600002432:600002432 SLMMEMORYLIMIT=machine
adjust='s/^\(SLMMEMORYLIMIT=\).*/\1"machine"/'
run 0
