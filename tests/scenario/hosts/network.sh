# Links and addresses: the order of the list, what the kinds leave out, which links are marked as configured by DHCP.
link eth1 127.0.0.1/8 127.0.0.2/8
link eth2 '10.9.0.1 peer 10.9.0.2' 10.2.0.1/16
link eth3 10.3.0.1/24
"$stage/ip" link set eth3 down
link br0 10.4.0.1/24
link eth4 10.8.0.1/24
link eth0.5 10.5.0.1/24
link veth101.0 10.6.0.1/24
link vnic1 10.7.0.1/24
for address in 10.0.0.1/24 10.0.0.2/24 '2001:db8::10/64 nodad'; do "$stage/ip" address add $address dev eth0; done

# br0 is a bridge and eth0.5 a VLAN: neither is listed. The pair device is, and so are the two nameless directory
# entries of the bridge, which have no address.
mkdir -p /sys/class/net/{br0/bridge,br0/brif/eth0,eth0,lo}
put /proc/net/vlan/config <<'END'
VLAN Dev name    | VLAN ID
Name-Type: VLAN_NAME_TYPE_RAW_PLUS_VID_NO_PAD
eth0.5         | 5  | eth0
END
put /proc/tarn/veth <<'END'
Version: 1.0
00:18:51:00:00:01 veth101.0 00:18:51:00:00:02 eth0 101
END
# eth1 is made first of all, by its configured address, and so comes last.
put /etc/tarn/tarnnet.conf <<'END'
# configured
VNID_br0="office"
IFLST_br0="eth0"
ADDR_eth1="10.1.0.9/24 10.1.0.10/24"
ADDR_eth2=10.1.0.11
ADDR_absent="10.1.0.12/24"
END
scripts=/etc/sysconfig/network-scripts
put $scripts/ifcfg-eth0 $'DEVICE=eth0\n  BOOTPROTO=\'dhcp\'\nBOOTPROTO=dhcp'
put $scripts/ifcfg-eth2 $'bootproto=dhcp\nBOOTPROTO=static'
put /etc/sysconfig/network/ifcfg-eth3 'BOOTPROTO=dhcp4'
put $scripts/ifcfg-br0 'BOOTPROTO=dhcp'
put $scripts/ifcfg-office $'DEVICE=eth4\nBOOTPROTO=dhcp'
put $scripts/ifcfg-quoted $'DEVICE="vnic1"\nBOOTPROTO=dhcp'

# Marked links first, the last one marked (the oldest) in front; then the others, the youngest in front. A file that is
# found by its device line only is opened by its bare name, so it counts only where a file of that name is at hand.
rest='10.9.0.1 10.2.0.1 127.0.0.2 '
config "#IP_ADDRESS=10.0.0.1 10.0.0.2 2001:db8::10 10.3.0.1 10.7.0.1 10.6.0.1 10.8.0.1 $rest"
run 0
cd $scripts || exit
config "#IP_ADDRESS=10.0.0.1 10.0.0.2 2001:db8::10 10.3.0.1 10.8.0.1 10.7.0.1 10.6.0.1 $rest"
run 0
cd /

# A SUSE host names its files by hardware address: one for eth2, two for eth4, of which the one with "eth" is read.
# The address text of a link is cut at 1023 characters: 60 addresses of 17, and 3 more.
rm -r $scripts /etc/sysconfig/network
touch /etc/SuSE-release
"$stage/ip" link set eth2 address 02:00:00:00:00:02
"$stage/ip" link set eth4 address 02:00:00:00:00:04
put /etc/sysconfig/network/ifcfg-any-02:00:00:00:00:02 'BOOTPROTO=dhcp'
put /etc/sysconfig/network/ifcfg-bond-id-02:00:00:00:00:04 'BOOTPROTO=static'
put /etc/sysconfig/network/ifcfg-eth-id-02:00:00:00:00:04 'BOOTPROTO=dhcp'
link eth9 $(printf '10.100.100.%s/8 ' $(seq 100 161))
config "#IP_ADDRESS=10.9.0.1 10.2.0.1 10.8.0.1 $(printf '10.100.100.%s ' $(seq 100 159))10. 10.7.0.1 10.6.0.1 10.3.0.1 \
10.0.0.1 10.0.0.2 2001:db8::10 127.0.0.2 "
run 0
