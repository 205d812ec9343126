# More open descriptors than the arguments of one command hold in the usual stack: the run raises its limit first.
ulimit -Ss 8192
ulimit -Hs unlimited
fds 100001 100000
fds 100002 50000
fds 100003 3
# 150003 x 1.2, above all that is derived from sockets and processes.
config NUMFILE=180003:180003 DCACHESIZE=76033264:76033264 KMEMSIZE=93727984:93727984 \
    SLMMEMORYLIMIT=570550592:570550592
run 0
