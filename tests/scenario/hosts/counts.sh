# What odd answers and odd processes count as; each row tells by its digits in the sums.
stub wc 'cat >/dev/null; printf "  1 23\r\n\0009"' # 246 rules and routes; the other counts have their floors above that
put "$out/ipcs" $'pages resident 99999\npages allocated\n\n x40000 7\npages allocated 5'
# The first line is the header, whatever it looks like; the third column, or the next digits behind it.
put "$out/df-k" $'/dev/h 1 90000 3 4% /\n/dev/a 1 20 8 20% /\n/dev/b\t50\t7000\t43 14% /b\n/dev/a-long-name\n  10 200 80 2% /
/dev/a 100\n/dev/b 50 \n\n/dev/c\n/dev/a 0 - - 30% /'
put "$out/df-i" $'header\n/a 9 2147483647 1\n/b 9 1 1' # wraps at 32 bits, below what was there

# Children of one parent and of one resident size are counted once, others each.
for pid in 501 502 503; do process $pid PPid=5 VmRSS=1200 VmSize=40000 VmLck=8000; done
for pid in 601 602 603 604; do process $pid PPid=6 VmRSS=$((1200 + pid / 603)) VmSize=15000 VmLck=75; done
for pid in 701 702; do process $pid PPid=7 VmRSS=$pid VmSize=30000; done
process 1201 PPid=0 VmRSS=99999999999 VmSize=20000 # mod 2^32
process 1202 PPid=0 VmRSS=1215752191 VmSize=20000
# Sizes wrap at 32 bits: the three together are none, and so is what they lock.
process 1301 PPid=13 VmExe=2147483647 VmLib=400000 VmLck=2147483647
process 1401 PPid=14 VmSize=2147483647 VmLck=2147483647
process 1501 PPid=15 VmSize=400000 VmLck=2
process 1601 PPid=16 VmSize=-20000
# Keys stand whole at the start of a line, the last one decides, and a value is of its own line.
put /proc/801/status $'Pid:\t77\nTracerPid:\t5\nPPid:\t8\nVmPeak:\t 99999 kB\nVmSize:\t  500000 kB\n VmSize:\t1 kB\nVmSizes:\t9
PPids:\t5\nVmLck:\t    4000 kB\nVmLcks:\t9\nVmRSS:\t 1200 kB\nVmRSSs:\t9\nVmExe:\t  100 kB\nVmExes:\t9\nVmLib:\t  2000 kB\nVmLibs:\t9'
process 802 PPid=8 VmRSS=1200 VmSize=497900 VmLck=4000
put /proc/901/status $'PPid:\t9\nVmSize:\nVmRSS:\t70000 kB'
put /proc/1001/status $'PPid:\t10\nVmSize: \v\n120000'
put /proc/1101/status $'PPid:\t11\nVmSize:\t12000kB\nVmSize:\tx\nVmRS'
# What is no process, or ended meanwhile.
mkdir /proc/601abc
mkdir -p /proc/1702 /proc/1703/status

# 40000 + 4 x 15000 + 2 x 30000 + 20000 - 20000 + 500000 - 100 - 2000 KiB are 164475 pages; 8000 + 300 + 4000 are 3075.
config NUMIPTENT=295:295 SHMPAGES=48000:48000 DISKSPACE=10875:11962 PRIVVMPAGES=197370:217107 LOCKEDPAGES=3690:3690 \
    VMGUARPAGES=197370:2147483647 OOMGUARPAGES=197370:2147483647 SLMMEMORYLIMIT=1214395136:1214395136
run 0
