# Sourced by namespace_switch_test.sh inside its namespaces: the real systemd-resolved 252 without systemd
# as PID 1, from the package unpacked in $BRIVANTA_RESOLVED_ROOT, with a throw-away system bus.
RESOLVED_ROOT=$BRIVANTA_RESOLVED_ROOT
multiarch=$(gcc -dumpmachine 2>/dev/null || echo x86_64-linux-gnu)
export LD_LIBRARY_PATH=$RESOLVED_ROOT/usr/lib/$multiarch/systemd:$RESOLVED_ROOT/usr/lib/$multiarch
RESOLVECTL=$RESOLVED_ROOT/usr/bin/resolvectl

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
    printf 'nameserver 127.0.0.53\noptions edns0 trust-ad\n' >/etc/resolv.conf
    "$RESOLVED_ROOT/lib/systemd/systemd-resolved" >"$work/resolved.log" 2>&1 &
    pids+=($! "$(cat "$work/dbus.pid")")
    for i in $(seq 50); do "$RESOLVECTL" status >/dev/null 2>&1 && break; sleep 0.1; done
    # The link's own server, as DHCP would set it, with a search domain of its own.
    "$RESOLVECTL" dns brv0 192.0.2.9 && "$RESOLVECTL" domain brv0 lan || fail "resolvectl cannot configure brv0"
}
