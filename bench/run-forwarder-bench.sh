#!/usr/bin/env bash
# brivanta-dohd against dnsdist 1.7 (Debian), both forwarding plain DNS to the same local DNS-over-HTTPS
# server (unbound, HTTP/2, self-signed certificate made here), measured by dnsperf in one run:
#   - 100 queries in flight and 1 in flight, with unique names (nothing can come from a cache);
#   - 100 in flight over a small set of names, after a warm-up (answers from the cache; dnsdist with its
#     packet cache);
#   - the forwarder's resident memory when idle;
#   - the first query after a simulated network change (the client's address changes under a live
#     HTTP/2 connection, in private network namespaces).
# Prints `name: value` lines and writes them to bench/results/forwarder.txt.
#
#   bash bench/run-forwarder-bench.sh [seconds-per-case]      (default 10; needs root for namespaces)
# Loopback and private namespaces only; nothing of the machine's DNS is touched.
set -euo pipefail
cd "$(dirname "$0")/.."
SECS=${1:-10}
ROOT=$(pwd)
DOHD=${DOHD:-$ROOT/build/default/forwarder/brivanta-dohd}
OUT=$ROOT/bench/results/forwarder.txt

need() { command -v "$1" >/dev/null || missing+=("$2"); }
missing=()
need unbound unbound; need dnsdist dnsdist; need dnsperf dnsperf; need openssl openssl; need ip iproute2
need python3 python3
if [ ${#missing[@]} -gt 0 ]; then
    # Packaged services must not start on a bench machine.
    trap 'rm -f /usr/sbin/policy-rc.d' EXIT
    [ -e /usr/sbin/policy-rc.d ] || { printf '#!/bin/sh\nexit 101\n' >/usr/sbin/policy-rc.d; chmod 755 /usr/sbin/policy-rc.d; }
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
    rm -f /usr/sbin/policy-rc.d; trap - EXIT
fi
if [ ! -x "$DOHD" ]; then
    cmake --preset default >/dev/null
    cmake --build --preset default --target brivanta-dohd >/dev/null
fi

WORK=$(mktemp -d /tmp/brivanta-forwarder-bench.XXXXXX)
pids=()
cleanup() {
    local p
    for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
    wait 2>/dev/null || true
    ip netns del brvbenchA 2>/dev/null || true
    ip netns del brvbenchB 2>/dev/null || true
    rm -rf "$WORK"
}
trap cleanup EXIT
log() { echo "$*" >&2; }
results=()
out() { echo "$1: $2"; results+=("$1: $2"); }
busy() { [ -n "$(ss -Hltun "sport = :$1" 2>/dev/null)" ]; }
wait_udp() { local i; for ((i = 0; i < 100; i++)); do [ -n "$(ss -Hlun "src $1 and sport = :$2" 2>/dev/null)" ] && return 0; sleep 0.1; done; return 1; }

DOH_PORT=8453; PLAIN_PORT=5351; FWD_PORT=5350; DD_PORT=5352
for p in $DOH_PORT $PLAIN_PORT $FWD_PORT $DD_PORT; do busy $p && { log "port $p is in use (an earlier run?)"; exit 1; }; done

# --- the upstream: unbound with DoH, h0..h999 fixed, anything under u.bench.test answered by redirect
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=doh.bench.test \
    -addext "subjectAltName=DNS:doh.bench.test,IP:127.0.0.1,IP:192.0.2.1" \
    -keyout "$WORK/key.pem" -out "$WORK/cert.pem" 2>/dev/null
{
    echo 'local-zone: "bench.test." static'
    echo 'local-data: "doh.bench.test. 300 IN A 127.0.0.1"'
    for i in $(seq 0 999); do echo "local-data: \"h$i.bench.test. 300 IN A 192.0.2.$((i % 250 + 1))\""; done
    echo 'local-zone: "u.bench.test." redirect'
    echo 'local-data: "u.bench.test. 300 IN A 192.0.2.77"'
} >"$WORK/zone.conf"
unbound_conf() { # ADDRESS
    cat <<EOF
server:
    username: ""
    chroot: ""
    directory: "$WORK"
    pidfile: ""
    use-syslog: no
    logfile: ""
    verbosity: 0
    num-threads: 1
    interface: $1@$DOH_PORT
    https-port: $DOH_PORT
    http-endpoint: "/dns-query"
    http-max-streams: 200
    tls-service-key: "$WORK/key.pem"
    tls-service-pem: "$WORK/cert.pem"
    interface: $1@$PLAIN_PORT
    access-control: 0.0.0.0/0 allow
    module-config: "iterator"
    do-not-query-localhost: yes
    include: "$WORK/zone.conf"
EOF
}
unbound_conf 127.0.0.1 >"$WORK/unbound.conf"
for i in $(seq 0 999); do echo "h$i.bench.test A"; done >"$WORK/cached.txt"
python3 -c "
import sys
with open('$WORK/unique.txt', 'w') as f:
    for i in range(600000): f.write(f'q{i}.u.bench.test A\n')"

dnsdist_conf() { # CACHE(0|1)
    cat <<EOF
setSecurityPollSuffix("")
setLocal("127.0.0.1:$DD_PORT")
addACL("127.0.0.0/8")
newServer({address = "127.0.0.1:$DOH_PORT", tls = "openssl", subjectName = "doh.bench.test",
           dohPath = "/dns-query", caStore = "$WORK/cert.pem", validateCertificates = true,
           checkName = "h1.bench.test.", name = "local-doh"})
EOF
    [ "$1" = 1 ] && echo 'pc = newPacketCache(10000, {maxTTL=86400, minTTL=0}); getPool(""):setCache(pc)'
    return 0
}
dnsdist_conf 0 >"$WORK/dnsdist.conf"
dnsdist_conf 1 >"$WORK/dnsdist-cache.conf"

unbound -d -c "$WORK/unbound.conf" >"$WORK/unbound.log" 2>&1 &
pids+=($!)
wait_udp 127.0.0.1 $PLAIN_PORT || { log "unbound did not start: $(cat "$WORK/unbound.log")"; exit 1; }

FWD_CMD=("$DOHD" --listen "127.0.0.1:$FWD_PORT" --upstream "https://doh.bench.test:$DOH_PORT/dns-query"
    --resolve "doh.bench.test:$DOH_PORT:127.0.0.1" --ca "$WORK/cert.pem" --state-dir "$WORK/state")
mkdir -p "$WORK/state"

# perf LABEL PORT QUERYFILE INFLIGHT [warm]: dnsperf for SECS seconds; sets QPS and AVG_MS
perf() {
    local label=$1 port=$2 file=$3 q=$4 sum="$WORK/dnsperf-$1.txt"
    if [ "${5:-}" = warm ]; then dnsperf -s 127.0.0.1 -p "$port" -d "$file" -n 1 -q 100 >/dev/null 2>&1 || true; fi
    log "== $label"
    timeout $((SECS + 30)) dnsperf -s 127.0.0.1 -p "$port" -d "$file" -l "$SECS" -T 1 -c 1 -q "$q" >"$sum" 2>&1 || true
    QPS=$(awk '/Queries per second/ {printf "%.0f", $4; exit}' "$sum")
    AVG_MS=$(awk '/Average Latency/ {printf "%.3f", $4 * 1000; exit}' "$sum")
    local lost; lost=$(awk '/Queries lost/ {print $3; exit}' "$sum")
    out "$label.qps" "${QPS:-0}"
    out "$label.avg_latency_ms" "${AVG_MS:-n/a}"
    out "$label.lost" "${lost:-n/a}"
}
ready() { # PORT: until a query is answered (first DoH connection, dnsdist's health check)
    local i
    for i in $(seq 1 40); do
        echo "h1.bench.test A" | timeout 5 dnsperf -s 127.0.0.1 -p "$1" -n 1 -t 1 2>/dev/null |
            grep -q 'Queries completed: *1 ' && return 0
        sleep 0.25
    done
    return 1
}
rss() { awk '/^VmRSS/ {print $2}' "/proc/$1/status"; }
# what is the process's own, not pages of shared libraries
rss_anon() { awk '/^RssAnon/ {print $2}' "/proc/$1/status"; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b + 0 == 0) print "n/a"; else printf "%.2f", a / b }'; }

out bench.date "$(date -u +%Y-%m-%dT%H:%M:%SZ)"
out bench.host "$(nproc) cores, $(awk -F': ' '/model name/ {print $2; exit}' /proc/cpuinfo), kernel $(uname -r)"
out bench.secs_per_case "$SECS"
out bench.versions "unbound $(unbound -V | awk 'NR==1 {print $2}'), dnsdist $(dnsdist --version | awk 'NR==1 {print $2}'), dnsperf $(dnsperf -h 2>&1 | awk '/^Version/ {print $2}')"

# --- dnsdist, then dnsdist with its packet cache
dnsdist --supervised --disable-syslog -C "$WORK/dnsdist.conf" >"$WORK/dnsdist.log" 2>&1 &
DD=$!; pids+=($DD)
ready $DD_PORT || { log "dnsdist answers nothing: $(tail -5 "$WORK/dnsdist.log")"; exit 1; }
perf dnsdist.uncached100 $DD_PORT "$WORK/unique.txt" 100; dd_unc=$QPS
perf dnsdist.uncached1 $DD_PORT "$WORK/unique.txt" 1; dd_one=$AVG_MS
kill $DD; wait $DD 2>/dev/null || true
dnsdist --supervised --disable-syslog -C "$WORK/dnsdist-cache.conf" >"$WORK/dnsdist-cache.log" 2>&1 &
DD=$!; pids+=($DD)
ready $DD_PORT || { log "dnsdist (cache) answers nothing"; exit 1; }
perf dnsdist_cache.cached100 $DD_PORT "$WORK/cached.txt" 100 warm; dd_cached=$QPS
kill $DD; wait $DD 2>/dev/null || true

# --- brivanta-dohd
"${FWD_CMD[@]}" >"$WORK/dohd.log" 2>&1 &
FWD=$!; pids+=($FWD)
wait_udp 127.0.0.1 $FWD_PORT || { log "brivanta-dohd did not start: $(cat "$WORK/dohd.log")"; exit 1; }
ready $FWD_PORT || { log "brivanta-dohd answers nothing: $(tail -5 "$WORK/dohd.log")"; exit 1; }
sleep 2
out forwarder_rss_kib "$(rss $FWD)"
out forwarder_rss_anon_kib "$(rss_anon $FWD)"
perf forwarder.uncached100 $FWD_PORT "$WORK/unique.txt" 100; f_unc=$QPS
perf forwarder.uncached1 $FWD_PORT "$WORK/unique.txt" 1; f_one=$AVG_MS
perf forwarder.cached100 $FWD_PORT "$WORK/cached.txt" 100 warm; f_cached=$QPS
out forwarder_rss_kib_after_load "$(rss $FWD)"
kill $FWD; wait $FWD 2>/dev/null || true

out dnsdist_one_in_flight_avg_ms "$dd_one"
out forwarder_one_in_flight_avg_ms "$f_one"
out forwarder_vs_dnsdist_qps_ratio "$(ratio "$f_unc" "$dd_unc")"
out forwarder_cached_vs_dnsdist_cached_qps_ratio "$(ratio "$f_cached" "$dd_cached")"

# --- network change: forwarder in netns A, DoH server in netns B across a veth pair
ip netns add brvbenchA; ip netns add brvbenchB
ip link add brvbA0 type veth peer name brvbB0
ip link set brvbA0 netns brvbenchA; ip link set brvbB0 netns brvbenchB
ip -n brvbenchA link set lo up; ip -n brvbenchA addr add 192.0.2.2/24 dev brvbA0; ip -n brvbenchA link set brvbA0 up
ip -n brvbenchB link set lo up; ip -n brvbenchB addr add 192.0.2.1/24 dev brvbB0; ip -n brvbenchB link set brvbB0 up
unbound_conf 192.0.2.1 >"$WORK/unbound-b.conf"
ip netns exec brvbenchB unbound -d -c "$WORK/unbound-b.conf" >"$WORK/unbound-b.log" 2>&1 &
pids+=($!)
ip netns exec brvbenchB bash -c "for i in \$(seq 100); do ss -Hltn 'sport = :$DOH_PORT' | grep -q . && exit 0; sleep 0.1; done; exit 1"
mkdir -p "$WORK/state-b"
ip netns exec brvbenchA "$DOHD" --listen "127.0.0.1:$FWD_PORT" --upstream "https://doh.bench.test:$DOH_PORT/dns-query" \
    --resolve "doh.bench.test:$DOH_PORT:192.0.2.1" --ca "$WORK/cert.pem" --state-dir "$WORK/state-b" \
    >"$WORK/dohd-b.log" 2>&1 &
pids+=($!)
cat >"$WORK/probe.py" <<'EOF'
import socket, struct, sys, time
name, port = sys.argv[1], int(sys.argv[2])
q = struct.pack(">HHHHHH", 0x4242, 0x0100, 1, 0, 0, 0)
q += b"".join(bytes([len(l)]) + l.encode() for l in name.split(".")) + b"\0" + struct.pack(">HH", 1, 1)
s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
s.settimeout(10)
t0 = time.monotonic()
s.sendto(q, ("127.0.0.1", port))
try:
    r = s.recv(4096)
    print("%.3f %d" % (time.monotonic() - t0, r[3] & 15))
except socket.timeout:
    print("%.3f timeout" % (time.monotonic() - t0))
EOF
probe() { ip netns exec brvbenchA python3 "$WORK/probe.py" "$1" $FWD_PORT; }
for i in $(seq 50); do [ "$(probe h1.bench.test | cut -d' ' -f2)" = 0 ] && break; sleep 0.2; done
probe h2.bench.test >/dev/null
ip -n brvbenchA link set brvbA0 down
ip -n brvbenchA addr del 192.0.2.2/24 dev brvbA0
ip -n brvbenchA addr add 192.0.2.3/24 dev brvbA0
ip -n brvbenchA link set brvbA0 up
sleep 1
first=$(probe h3.bench.test)
second=$(probe h4.bench.test)
out recovery_first_query_seconds "$(echo "$first" | cut -d' ' -f1)"
out recovery_first_query_rcode "$(echo "$first" | cut -d' ' -f2)"
out recovery_second_query_seconds "$(echo "$second" | cut -d' ' -f1)"

mkdir -p "$(dirname "$OUT")"
printf '%s\n' "${results[@]}" >"$OUT"
log "written to $OUT"
