# Sourced by namespace_switch_test.sh inside its namespaces: the real systemd-resolved 252 without systemd
# as PID 1, from the package unpacked in $BRIVANTA_RESOLVED_ROOT, with a throw-away system bus.
RESOLVED_ROOT=$BRIVANTA_RESOLVED_ROOT
multiarch=$(gcc -dumpmachine 2>/dev/null || echo x86_64-linux-gnu)
export LD_LIBRARY_PATH=$RESOLVED_ROOT/usr/lib/$multiarch/systemd:$RESOLVED_ROOT/usr/lib/$multiarch
RESOLVECTL=$RESOLVED_ROOT/usr/bin/resolvectl

run_resolved() { # WORK
    "$RESOLVED_ROOT/lib/systemd/systemd-resolved" >>"$1/resolved.log" 2>&1 &
    echo $! >"$1/resolved.pid"
    pids+=($!)
    local i
    for i in $(seq 50); do "$RESOLVECTL" status >/dev/null 2>&1 && return 0; sleep 0.1; done
    fail "systemd-resolved did not come up"
}

# systemctl as brivanta-dns-apply uses it on a machine with systemd: restart resolved, and stand in for
# socket activation by starting brivanta-dohd as root, dropping to nobody.
systemd_stand_in() { # WORK
    local work=$1
    mkdir -p /run/systemd/system "$work/bin"
    cat >"$work/bin/systemctl" <<SHIM
#!/bin/bash
# as systemctl stop does: return once the service is gone
stop_forwarder() {
    pkill -x brivanta-dohd || return 0
    for i in \$(seq 100); do pgrep -x brivanta-dohd >/dev/null || return 0; sleep 0.05; done
}
verb=\$1; shift
for unit in "\$@"; do
    case \$verb:\$unit in
        try-reload-or-restart:systemd-resolved*)
            kill \$(cat "$work/resolved.pid"); while kill -0 \$(cat "$work/resolved.pid") 2>/dev/null; do sleep 0.05; done
            "$RESOLVED_ROOT/lib/systemd/systemd-resolved" >>"$work/resolved.log" 2>&1 &
            echo \$! >"$work/resolved.pid"
            for i in \$(seq 50); do "$RESOLVECTL" status >/dev/null 2>&1 && break; sleep 0.1; done
            # runtime link settings survive a restart in systemd-networkd's care; here we set them again
            "$RESOLVECTL" dns brv0 192.0.2.9; "$RESOLVECTL" domain brv0 lan ;;
        restart:brivanta-dohd.socket)
            stop_forwarder
            setsid "\$BRIVANTA_DOHD" --config /etc/brivanta/dohd.conf --user nobody </dev/null >/dev/null 2>&1 & ;;
        stop:brivanta-dohd.*) stop_forwarder ;;
    esac
done
exit 0
SHIM
    # systemd-run --on-active=<s>s ... <command>: the command later, detached
    cat >"$work/bin/systemd-run" <<'SHIM'
#!/bin/bash
delay=0
while [ $# -gt 0 ] && [ "${1#--}" != "$1" ]; do
    case $1 in --on-active=*) delay=${1#--on-active=}; delay=${delay%s} ;; esac
    shift
done
setsid bash -c 'sleep "$0"; exec "$@"' "$delay" "$@" </dev/null >/dev/null 2>&1 &
SHIM
    chmod +x "$work/bin/systemctl" "$work/bin/systemd-run"
    export PATH=$work/bin:$PATH
}

start_resolved() { # WORK
    local work=$1 i id
    # resolved drops to its own user; /etc is a private overlay here
    if ! grep -q '^systemd-resolve:' /etc/passwd; then
        id=990; while getent passwd $id >/dev/null || getent group $id >/dev/null; do id=$((id - 1)); done
        echo "systemd-resolve:x:$id:$id:systemd Resolver:/:/usr/sbin/nologin" >>/etc/passwd
        echo "systemd-resolve:x:$id:" >>/etc/group
    fi
    mkdir -p /run/dbus /run/systemd/resolve
    chown systemd-resolve: /run/systemd/resolve
    cat >"$work/bus.conf" <<'CONF'
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/>
  </policy>
</busconfig>
CONF
    dbus-daemon --config-file="$work/bus.conf" --fork --print-pid >"$work/dbus.pid" || fail "no system bus"
    pids+=("$(cat "$work/dbus.pid")")
    printf 'nameserver 127.0.0.53\noptions edns0 trust-ad\n' >/etc/resolv.conf
    run_resolved "$work"
    systemd_stand_in "$work"
    # The link's own server, as DHCP would set it, with a search domain of its own.
    "$RESOLVECTL" dns brv0 192.0.2.9 && "$RESOLVECTL" domain brv0 lan || fail "resolvectl cannot configure brv0"
}
