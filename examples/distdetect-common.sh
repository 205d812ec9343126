#!/bin/sh
# An example of the detection script that tarnhwcalc(8) runs: prints the distribution and its version as one word
# (debian-12, rhel-6.9, sles-11.4), taken from the usual release files, and exits 0; exits 1 when none is known.
#
# Use it as it is, or change the words to the names that your container templates have. As root, with umask 022
# (the first command fails when somebody has made the directory already: find out who):
#
#     mkdir /tmp/usr &&
#         mkdir -p /tmp/usr/local/share/tarnp2v &&
#         cp distdetect-common.sh /tmp/usr/local/share/tarnp2v/
#
# The release files are read as text and never run. The one optional argument is another root to look under.

etc=${1:-}/etc
usr_lib=${1:-}/usr/lib

# print_name NAME VERSION: what a template's name may hold, in lower case; fails on an empty name.
print_name() {
    name=$(printf '%s' "$1" | tr '[:upper:]' '[:lower:]' | tr -cd 'a-z0-9._-')
    version=$(printf '%s' "$2" | tr '[:upper:]' '[:lower:]' | tr -cd 'a-z0-9._-')
    [ -n "$name" ] && printf '%s\n' "$name${version:+-$version}"
}

# value FILE KEY: the value of the first line KEY=value or KEY = value, without its quotes.
value() {
    while IFS= read -r line || [ -n "$line" ]; do
        case $line in
        "$2="*) line=${line#*=} ;;
        "$2 = "*) line=${line#*= } ;;
        *) continue ;;
        esac
        line=${line#[\"\']}
        printf '%s' "${line%[\"\']}"
        return
    done <"$1"
}

first_line() {
    IFS= read -r line <"$1" || [ -n "$line" ]
    printf '%s' "$line"
}

# ID="centos" and VERSION_ID="7"
from_os_release() {
    for file in "$etc/os-release" "$usr_lib/os-release"; do
        [ -r "$file" ] && print_name "$(value "$file" ID)" "$(value "$file" VERSION_ID)" && return
    done
    return 1
}

# Red Hat Enterprise Linux Server release 6.9 (Santiago)
# A rebuilt distribution has its own file beside the one of what it rebuilds, so its own is asked first.
from_release_line() {
    for file in oracle-release centos-release fedora-release mandriva-release gentoo-release redhat-release; do
        [ -r "$etc/$file" ] || continue
        line=$(first_line "$etc/$file")
        case $line in
        "Red Hat Enterprise"*) name=rhel ;;
        "Oracle Linux"*) name=ol ;;
        *) name=${line%% *} ;;
        esac
        case $line in
        *" release "*) version=${line#* release } ;;
        *) version= ;;
        esac
        print_name "$name" "${version%% *}" && return
    done
    return 1
}

# SUSE Linux Enterprise Server 11 (x86_64), then the lines VERSION = 11 and PATCHLEVEL = 4
from_suse_release() {
    [ -r "$etc/SuSE-release" ] || return
    version=$(value "$etc/SuSE-release" VERSION)
    level=$(value "$etc/SuSE-release" PATCHLEVEL)
    case $(first_line "$etc/SuSE-release") in
    openSUSE*) print_name opensuse "$version" ;;
    *"Enterprise Desktop"*) print_name sled "$version${level:+.$level}" ;;
    *) print_name sles "$version${level:+.$level}" ;;
    esac
}

# DISTRIB_ID=Ubuntu and DISTRIB_RELEASE=10.04
from_lsb_release() {
    [ -r "$etc/lsb-release" ] &&
        print_name "$(value "$etc/lsb-release" DISTRIB_ID)" "$(value "$etc/lsb-release" DISTRIB_RELEASE)"
}

# 6.0.10, or wheezy/sid before a release
from_debian_version() {
    [ -r "$etc/debian_version" ] || return
    version=$(first_line "$etc/debian_version")
    case $version in
    [0-9]*) print_name debian "${version%%.*}" ;;
    *) print_name debian "" ;;
    esac
}

# Slackware 14.2
from_slackware_version() {
    [ -r "$etc/slackware-version" ] || return
    line=$(first_line "$etc/slackware-version")
    print_name slackware "${line##* }"
}

from_os_release || from_release_line || from_suse_release || from_lsb_release || from_debian_version ||
    from_slackware_version
