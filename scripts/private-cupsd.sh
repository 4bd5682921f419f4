# Sourced by the print tests: a private CUPS scheduler on loopback
# (127.0.0.1:PORT) with its own configuration, spool, state and logs under
# DIR (the error log is DIR/log/error_log), running the filters and backends
# of SERVERBIN and accepting file: devices. The machine's own scheduler is
# not touched.
#
#   start_private_cupsd DIR SERVERBIN PORT PORT_VARIABLE   sets cupsd_pid and server
#   stop_private_cupsd [STATUS]    stops it (harmless twice); after a failure
#                                  (STATUS not 0) shows the end of its error log
cupsd_pid=""
cupsd_dir=""

start_private_cupsd() {
  local dir=$1 serverbin=$2 port=$3 port_variable=$4
  server=127.0.0.1:$port
  cupsd_dir=$dir
  if (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
    echo "port $port on 127.0.0.1 is taken; set $port_variable" >&2
    return 1
  fi
  mkdir -p "$dir"/{conf,spool/tmp,cache,state,log}
  cat >"$dir/conf/cups-files.conf" <<EOF2
ServerRoot $dir/conf
ServerBin $serverbin
DataDir /usr/share/cups
DocumentRoot /usr/share/cups/doc-root
RequestRoot $dir/spool
TempDir $dir/spool/tmp
CacheDir $dir/cache
StateDir $dir/state
ErrorLog $dir/log/error_log
AccessLog $dir/log/access_log
PageLog $dir/log/page_log
Printcap $dir/conf/printcap
ServerKeychain $dir/conf/ssl
FileDevice Yes
User lp
Group lp
SystemGroup root
EOF2
  cat >"$dir/conf/cupsd.conf" <<EOF2
LogLevel debug
Listen $server
Browsing No
BrowseLocalProtocols none
DefaultAuthType None
WebInterface No
ErrorPolicy abort-job
PreserveJobFiles No
<Location />
  Order allow,deny
  Allow 127.0.0.1
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
EOF2
  echo "--- private scheduler on $server ($dir)"
  cupsd -f -c "$dir/conf/cupsd.conf" -s "$dir/conf/cups-files.conf" &
  cupsd_pid=$!
  local i
  for i in $(seq 100); do
    lpstat -h "$server" -r 2>/dev/null | grep "is running" >/dev/null && return 0
    kill -0 "$cupsd_pid" 2>/dev/null || { echo "cupsd stopped at start" >&2; return 1; }
    sleep 0.2
  done
  echo "cupsd did not answer within 20 s" >&2
  return 1
}

stop_private_cupsd() {
  if [ -n "$cupsd_pid" ] && kill -0 "$cupsd_pid" 2>/dev/null; then
    kill "$cupsd_pid"
    for _ in $(seq 50); do kill -0 "$cupsd_pid" 2>/dev/null || break; sleep 0.1; done
    kill -0 "$cupsd_pid" 2>/dev/null && kill -9 "$cupsd_pid"
    wait "$cupsd_pid" 2>/dev/null || true
  fi
  cupsd_pid=""
  if [ "${1:-0}" -ne 0 ] && [ -f "$cupsd_dir/log/error_log" ]; then
    echo "--- last lines of the scheduler's error log"
    grep -v '^d ' "$cupsd_dir/log/error_log" | tail -40 || true
  fi
}
