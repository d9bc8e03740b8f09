#!/usr/bin/env bash
# Switching the machine's DNS on and off for real, inside private network, mount and PID namespaces: /etc and
# /var/lib are overlays on tmpfs, /run is a tmpfs, processes are private, so nothing of the real machine
# changes.
#   namespace_switch_test.sh BUILD_DIR plain      no resolver daemon: /etc/resolv.conf is replaced
#   namespace_switch_test.sh BUILD_DIR resolved   the real systemd-resolved 252, unpacked from its .deb
# Upstreams on loopback: an "ISP" resolver (plain DNS, 127.0.0.1:53) and the filtering DNS-over-HTTPS
# resolver (127.0.0.1:8443), which answer the same names differently, so a leak shows.
# Exit 77 (skipped) when the machine cannot run it.
set -uo pipefail
build=$(cd "$1" && pwd)
stack=$2
skip() { echo "SKIPPED: $*"; exit 77; }
fail() { echo "FAILED: $*"; [ -n "${work:-}" ] && tail -n 5 "$work"/*.log 2>/dev/null; exit 1; }

if [ -z "${BRV_IN_NAMESPACE:-}" ]; then
    [ "$(id -u)" = 0 ] || skip "needs root for network and mount namespaces"
    for tool in unshare ip unbound openssl getent; do
        command -v $tool >/dev/null || skip "needs $tool"
    done
    if [ "$stack" = resolved ]; then
        resolved_root=${BRIVANTA_RESOLVED_ROOT:-/var/cache/brivanta-tests/systemd-resolved}
        [ -x "$resolved_root/lib/systemd/systemd-resolved" ] ||
            skip "systemd-resolved is not unpacked in $resolved_root (scripts/install-deps.sh does it)"
        command -v dbus-daemon >/dev/null || skip "needs dbus-daemon"
        export BRIVANTA_RESOLVED_ROOT=$resolved_root
    fi
    unshare -n -m -p -f --mount-proc --propagation private true 2>/dev/null || skip "cannot make namespaces here"
    BRV_IN_NAMESPACE=1 exec timeout 240 unshare -n -m -p -f --mount-proc --propagation private bash "$0" "$@"
fi

# --- inside the namespaces
work=$(mktemp -d /tmp/brivanta-ns.XXXXXX)
mount -t tmpfs tmpfs "$work"
pids=()
cleanup() { for p in "${pids[@]}"; do kill "$p" 2>/dev/null; done; pkill -f "$work" 2>/dev/null; wait 2>/dev/null; }
trap cleanup EXIT
for dir in etc var/lib; do
    mkdir -p "$work/ov/$dir/up" "$work/ov/$dir/work"
    mount -t overlay overlay -o "lowerdir=/$dir,upperdir=$work/ov/$dir/up,workdir=$work/ov/$dir/work" "/$dir" ||
        skip "overlayfs is not available"
done
mount -t tmpfs tmpfs /run
ip link set lo up
# getaddrinfo(AI_ADDRCONFIG) wants a non-loopback address before it asks for IPv4 at all
ip link add brv0 type veth peer name brv1 && ip addr add 192.0.2.9/24 dev brv0 &&
    ip link set brv1 up && ip link set brv0 up

# As resolvconf and others do: /etc/resolv.conf a symlink to a file under /run.
mkdir -p /run/resolvconf
printf '# the machine'\''s own resolver\nnameserver 127.0.0.1\n' >/run/resolvconf/resolv.conf
rm -f /etc/resolv.conf && ln -s ../run/resolvconf/resolv.conf /etc/resolv.conf

openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=doh.test \
    -addext "subjectAltName=DNS:doh.test" -keyout "$work/key.pem" -out "$work/cert.pem" 2>/dev/null
unbound_conf() { # NAME INTERFACE-LINES ZONE-LINES
    printf 'server:\n  username: ""\n  chroot: ""\n  directory: "%s"\n  pidfile: ""\n  use-syslog: no\n  logfile: "%s/%s.log"\n  verbosity: 1\n  log-queries: yes\n  num-threads: 1\n  access-control: 0.0.0.0/0 allow\n  module-config: "iterator"\n  do-not-query-localhost: yes\n%s\n  local-zone: "test." static\n%s\n' \
        "$work" "$work" "$1" "$2" "$3" >"$work/$1.conf"
}
unbound_conf isp '  interface: 127.0.0.1@53
  interface: 192.0.2.9@53' '
  local-data: "doh.test. 300 IN A 127.0.0.1"
  local-data: "h1.test. 300 IN A 198.51.100.1"
  local-data: "ads.test. 300 IN A 198.51.100.2"
  local-data: "printer.lan. 300 IN A 198.51.100.3"'
unbound_conf doh "  interface: 127.0.0.1@8443
  https-port: 8443
  http-endpoint: \"/dns-query\"
  tls-service-key: \"$work/key.pem\"
  tls-service-pem: \"$work/cert.pem\"" '
  local-data: "h1.test. 300 IN A 192.0.2.1"
  local-data: "h2.test. 300 IN A 192.0.2.2"
  local-zone: "ads.test." always_nxdomain'
for name in isp doh; do
    unbound -d -c "$work/$name.conf" >"$work/$name.out" 2>&1 &
    pids+=($!)
done
for i in $(seq 50); do
    [ -n "$(ss -Hltn 'sport = :8443')" ] && [ -n "$(ss -Hlun 'sport = :53')" ] && break
    sleep 0.1
done

lookup() { timeout 10 getent ahostsv4 "$1" | awk '{print $1; exit}'; }
[ "$(lookup h1.test)" = 198.51.100.1 ] || fail "the machine's own resolver does not answer before enabling"

if [ "$stack" = resolved ]; then
    . "$(dirname "$0")/resolved_in_namespace.sh"
    start_resolved "$work"
    [ "$(lookup h1.test)" = 198.51.100.1 ] || fail "systemd-resolved does not answer through the link's server"
fi
cp /etc/resolv.conf "$work/resolv.conf.before"
link_before=$(readlink /etc/resolv.conf)

mkdir -p /etc/brivanta
echo "ca-file = $work/cert.pem" >/etc/brivanta/dohd.local.conf
apply() { BRIVANTA_DOHD="$build/forwarder/brivanta-dohd" "$build/platform/linux/dns_apply/brivanta-dns-apply" "$@"; }

apply enable https://doh.test:8443/dns-query || fail "enable failed"
grep -q '"phase":"applied"' /var/lib/brivanta/state.json || fail "state.json does not say applied"
[ "$(lookup h1.test)" = 192.0.2.1 ] || fail "after enable, h1.test did not come from the DoH upstream: $(lookup h1.test)"
grep -q 'h1.test' "$work/doh.log" || fail "the DoH upstream never saw the query"
[ -z "$(lookup ads.test)" ] || fail "a name the filtering resolver refuses still resolves"
canary=$(lookup "n$RANDOM.canary.brivanta.test")
case $canary in 127.*) ;; *) fail "the canary does not resolve through the system resolver: '$canary'" ;; esac
status() { BRIVANTA_SYSTEM_ROOT= HOME=$work XDG_CONFIG_HOME=$work/config "$build/platform/linux/brivanta-dns" status; }
mkdir -p "$work/config/brivanta"
printf '{"format":1,"enabled":true,"dnsSettings":{"protocol":"dnsOverHTTPS","servers":[],"serverURL":"https://doh.test:8443/dns-query"},"onDemandRules":[]}\n' \
    >"$work/config/brivanta/dns-slot.json"
status >"$work/status.txt" || fail "brivanta-dns status says off while it is on: $(cat "$work/status.txt")"

if [ "$stack" = resolved ]; then
    [ "$(lookup printer.lan)" = 198.51.100.3 ] || fail "the link's own search domain no longer reaches the link's server"
    # A link that claims every name too (as a VPN does) makes resolved race both servers: a leak.
    "$RESOLVECTL" domain brv0 '~.' lan
    status >"$work/status.txt" && fail "status says on while a link routes every name elsewhere"
    grep -q 'Names can still reach 192.0.2.9 directly' "$work/status.txt" || fail "no leak reason: $(cat "$work/status.txt")"
    "$RESOLVECTL" domain brv0 lan
fi

expect_restored() { # WHAT
    [ "$(readlink /etc/resolv.conf)" = "$link_before" ] || fail "$1: /etc/resolv.conf is not the link it was"
    cmp -s /etc/resolv.conf "$work/resolv.conf.before" || fail "$1: resolv.conf differs"
    [ ! -e /etc/systemd/resolved.conf.d/90-brivanta.conf ] || fail "$1: the resolved drop-in is still there"
    [ ! -e /etc/brivanta/dohd.conf ] && [ ! -e /var/lib/brivanta/journal.json ] || fail "$1: dohd.conf or the journal is left"
    [ -z "$(pgrep -x brivanta-dohd)" ] || fail "$1: brivanta-dohd still runs"
    [ "$(lookup h1.test)" = 198.51.100.1 ] || fail "$1: the machine's own resolver does not answer"
}
apply disable || fail "disable failed"
expect_restored "disable"

# The helper stopped after each of its steps, as by a crash: disable, or enable again, finishes the job.
endpoint=https://doh.test:8443/dns-query
crashed() { # STEP ARGUMENTS...
    local step=$1
    shift
    BRIVANTA_APPLY_CRASH_AFTER=$step apply "$@" 2>/dev/null
}
for k in $(seq 1 30); do
    crashed $k enable $endpoint && { enable_steps=$((k - 1)); break; }
    [ $? = 86 ] || fail "enable stopped after step $k for another reason"
    if [ $((k % 2)) = 0 ]; then
        apply enable $endpoint 2>/dev/null || fail "enable after a crash at step $k"
        [ "$(lookup h1.test)" = 192.0.2.1 ] || fail "enable after a crash at step $k does not route"
    fi
    apply disable 2>/dev/null || fail "disable after enable crashed at step $k"
    expect_restored "disable after enable crashed at step $k"
done
apply enable $endpoint 2>/dev/null || fail "enable failed"
for k in $(seq 1 30); do
    crashed $k disable && { disable_steps=$((k - 1)); break; }
    [ $? = 86 ] || fail "disable stopped after step $k for another reason"
    apply disable 2>/dev/null || fail "disable after disable crashed at step $k"
    expect_restored "disable after it crashed at step $k"
    apply enable $endpoint 2>/dev/null || fail "enable failed"
done
apply disable 2>/dev/null
expect_restored "disable"
[ "${enable_steps:-0}" -gt 3 ] && [ "${disable_steps:-0}" -gt 2 ] || fail "the helper did not stop after its steps"

apply enable https://doh.test:8443/dns-query >/dev/null 2>&1 || fail "second enable failed"
[ "$(lookup h2.test)" = 192.0.2.2 ] || fail "second enable does not route"
apply pause 60 >/dev/null 2>&1 || fail "pause failed"
[ "$(lookup h1.test)" = 198.51.100.1 ] || fail "paused, but lookups do not use the machine's own resolver"
grep -q '"phase":"paused"' /var/lib/brivanta/state.json || fail "state.json does not say paused"
apply resume >/dev/null 2>&1 || fail "resume failed"
[ "$(lookup h1.test)" = 192.0.2.1 ] || fail "resumed, but lookups do not go through brivanta-dohd"
pkill -x brivanta-dohd
[ -z "$(lookup h2.test)" ] || fail "forwarder stopped, yet names resolve: lookups went around it"
status >"$work/status.txt" && fail "status says on with the forwarder stopped"
grep -q 'Blocking: off. The forwarder is not running.' "$work/status.txt" || fail "wrong reason: $(cat "$work/status.txt")"
apply disable >/dev/null 2>&1 || fail "final disable failed"
expect_restored "the final disable"
echo "PASSED ($stack)"
