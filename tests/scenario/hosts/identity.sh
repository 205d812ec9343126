# Who the host is: its name, name servers and search domains, whatever the resolver file holds.
echo 'srv-1."lab".example' >"$stage/proc/sys/kernel/hostname"
long=$(printf 'x%.0s' $(seq 5000))
{
    cat <<END
nameserver 10.0.0.1
nameserver	10.0.0.2	# the other
  nameserver   10.0.0.3  
nameserver
Nameserver 10.9.9.9
nameserver10.9.9.9
; nameserver 10.9.9.9
domain ignored.example
search a.example	b.example
search $long
options ndots:2
END
    printf 'search c.example \r\n\n\nnameserver ::1'
} | put /etc/resolv.conf
config HOSTNAME='srv-1."lab".example' SEARCHDOMAIN="a.example b.example $long c.example" \
    NAMESERVER='10.0.0.1 10.0.0.2#theother 10.0.0.3 ::1'
run 0

rm /etc/resolv.conf
mkdir /etc/resolv.conf
config HOSTNAME='srv-1."lab".example'
run 0
