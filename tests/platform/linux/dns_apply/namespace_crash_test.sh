#!/usr/bin/env bash
# brivanta-dns-apply for real, stopped after each of its steps: in private network, mount and pid
# namespaces (/etc and /var/lib overlays on tmpfs, /run a tmpfs), /etc/resolv.conf a symlink to the
# machine's own resolver on 127.0.0.1, the DoH upstream on 127.0.0.1:8443. After every crash, disable
# (or enable, then disable) must bring back the symlink and its target byte for byte.
#   namespace_crash_test.sh BUILD_DIR        exit 77: skipped
set -uo pipefail
build=$(cd "$1" && pwd)
skip() { echo "SKIPPED: $*"; exit 77; }
fail() { echo "FAILED: $*"; tail -n 5 "$work"/*.log "$work"/apply.err 2>/dev/null; exit 1; }

if [ -z "${BRV_IN_NAMESPACE:-}" ]; then
    [ "$(id -u)" = 0 ] || skip "needs root for network and mount namespaces"
    for tool in unshare ip unbound openssl getent ss; do command -v $tool >/dev/null || skip "needs $tool"; done
    [ -x "$build/forwarder/brivanta-dohd" ] || skip "brivanta-dohd is not built"
    unshare -n -m -p -f --mount-proc --propagation private true 2>/dev/null || skip "cannot make namespaces here"
    BRV_IN_NAMESPACE=1 exec timeout 280 unshare -n -m -p -f --mount-proc --propagation private bash "$0" "$@"
fi

work=$(mktemp -d /tmp/brivanta-crash.XXXXXX)
mount -t tmpfs tmpfs "$work"
for dir in etc var/lib; do
    mkdir -p "$work/ov/$dir/up" "$work/ov/$dir/work"
    mount -t overlay overlay -o "lowerdir=/$dir,upperdir=$work/ov/$dir/up,workdir=$work/ov/$dir/work" "/$dir" ||
        skip "overlayfs is not available"
done
mount -t tmpfs tmpfs /run
ip link set lo up
# getaddrinfo(AI_ADDRCONFIG) asks for IPv4 only with a non-loopback IPv4 address around
ip link add brv0 type veth peer name brv1 && ip addr add 192.0.2.9/24 dev brv0 && ip link set brv1 up && ip link set brv0 up

mkdir -p /run/resolvconf
printf '# the machine'\''s own resolver\nnameserver 127.0.0.1\n' >/run/resolvconf/resolv.conf
rm -f /etc/resolv.conf && ln -s ../run/resolvconf/resolv.conf /etc/resolv.conf
cp /run/resolvconf/resolv.conf "$work/target.before"
mkdir -p /etc/brivanta

openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=doh.test \
    -addext "subjectAltName=DNS:doh.test" -keyout "$work/key.pem" -out "$work/cert.pem" 2>/dev/null
echo "ca-file = $work/cert.pem" >/etc/brivanta/dohd.local.conf
unbound_conf() { # NAME INTERFACE-LINES DATA-LINES
    printf 'server:\n  username: ""\n  chroot: ""\n  directory: "%s"\n  pidfile: ""\n  use-syslog: no\n  logfile: "%s/%s.log"\n  verbosity: 1\n  log-queries: yes\n  num-threads: 1\n  access-control: 0.0.0.0/0 allow\n  module-config: "iterator"\n  do-not-query-localhost: yes\n%s\n  local-zone: "test." static\n%s\n' \
        "$work" "$work" "$1" "$2" "$3" >"$work/$1.conf"
}
unbound_conf isp '  interface: 127.0.0.1@53' '  local-data: "doh.test. 300 IN A 127.0.0.1"
  local-data: "h1.test. 300 IN A 198.51.100.1"
  local-data: "ads.test. 300 IN A 198.51.100.2"'
unbound_conf doh "  interface: 127.0.0.1@8443
  https-port: 8443
  http-endpoint: \"/dns-query\"
  tls-service-key: \"$work/key.pem\"
  tls-service-pem: \"$work/cert.pem\"" '  local-data: "h1.test. 300 IN A 192.0.2.1"
  local-zone: "ads.test." always_nxdomain'
for name in isp doh; do unbound -d -c "$work/$name.conf" >"$work/$name.out" 2>&1 & done
for _ in $(seq 50); do
    [ -n "$(ss -Hltn 'sport = :8443')" ] && [ -n "$(ss -Hlun 'sport = :53')" ] && break
    sleep 0.1
done

lookup() { timeout 10 getent ahostsv4 "$1" | awk '{print $1; exit}'; }
apply() { BRIVANTA_DOHD="$build/forwarder/brivanta-dohd" "$build/platform/linux/dns_apply/brivanta-dns-apply" "$@" 2>"$work/apply.err"; }
endpoint=https://doh.test:8443/dns-query
expect_restored() { # WHAT
    [ "$(readlink /etc/resolv.conf)" = ../run/resolvconf/resolv.conf ] || fail "$1: /etc/resolv.conf is no longer the symlink"
    cmp -s /run/resolvconf/resolv.conf "$work/target.before" || fail "$1: the symlink's target changed"
    [ ! -e /etc/brivanta/dohd.conf ] && [ ! -e /var/lib/brivanta/journal.json ] || fail "$1: dohd.conf or the journal is left"
    [ -z "$(pgrep -x brivanta-dohd)" ] || fail "$1: brivanta-dohd still runs"
    [ "$(lookup h1.test)" = 198.51.100.1 ] || fail "$1: the machine's own resolver does not answer"
}
expect_routed() { # WHAT
    [ "$(lookup h1.test)" = 192.0.2.1 ] || fail "$1: h1.test did not come through the DoH upstream"
    [ -z "$(lookup ads.test)" ] || fail "$1: a name the DoH upstream refuses resolves"
}

expect_restored "before enabling"
steps=0
for k in $(seq 1 30); do
    BRIVANTA_APPLY_CRASH_AFTER=$k apply enable $endpoint
    status=$?
    if [ $status = 0 ]; then steps=$((k - 1)); break; fi
    [ $status = 86 ] || fail "enable stopped after step $k with status $status"
    if [ $((k % 2)) = 0 ]; then
        apply enable $endpoint || fail "enable after a crash at step $k"
        expect_routed "enable after a crash at step $k"
    fi
    apply disable || fail "disable after a crash at step $k"
    expect_restored "disable after enable crashed at step $k"
done
[ $steps -gt 3 ] || fail "enable finished after only $steps steps"
echo "ok: enable crashed after each of its $steps steps; disable or enable again finished each time"

expect_routed "enable"
grep -q 'h1.test' "$work/doh.log" || fail "the DoH upstream never saw the query"
echo "ok: enable routes getaddrinfo through brivanta-dohd to the DoH upstream"
for k in $(seq 1 30); do
    BRIVANTA_APPLY_CRASH_AFTER=$k apply disable
    status=$?
    if [ $status = 0 ]; then break; fi
    [ $status = 86 ] || fail "disable stopped after step $k with status $status"
    apply disable || fail "disable after disable crashed at step $k"
    expect_restored "disable after disable crashed at step $k"
    apply enable $endpoint || fail "enable again after disable crashed at step $k"
done
expect_restored "disable"
echo "ok: disable crashed after each of its $((k - 1)) steps; disable again restored the symlink byte for byte"
echo PASSED
