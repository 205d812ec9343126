# A host where nothing happens: every count stays at its floor and no text line appears but the marked ones.
config
run 0
is "the library's log" "init_libtarnnet_state||" "$(cut -f 4 /var/log/tarnnetcfg.log | tr '\n' '|')"

# Without a name, a detection script or a kernel list of file systems there is one warning and no text line at all.
echo >"$stage/proc/sys/kernel/hostname"
rm -r /tmp/usr
config HOSTNAME= DISTRIBUTION=
complains "OS distribution detection script (/tmp//usr/local/share/tarnp2v/distdetect-common.sh) was not found. \
The DISTRIBUTION parameter of the CT config must be set manually."
run 0
