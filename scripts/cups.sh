#!/usr/bin/env bash
# A throwaway CUPS scheduler for the printing tests: its own configuration,
# spool and logs in DIR, reached only through a socket in DIR (no network
# port), with one queue that writes every job to a file.
#
#   scripts/cups.sh start DIR   writes the configuration (if needed), starts
#                               the scheduler, adds the queue, prints the
#                               value for CUPS_SERVER (the socket)
#   scripts/cups.sh stop DIR    stops it
#   scripts/cups.sh server DIR  prints the value for CUPS_SERVER
#
# The queue is "orvenda-test" (PRINTER overrides the name): a PDF printer
# whose jobs go to DIR/out/orvenda-test.prn, each job over the one before,
# as the PDF that CUPS's own pdftopdf filter makes of it, so that pdftotext
# reads a printed job back. Clients find the scheduler through
# CUPS_SERVER=DIR/cups.sock; `lpstat -v orvenda-test` names the file.
set -euo pipefail
cmd=${1:?usage: cups.sh start|stop|server DIR}
dir=${2:?usage: cups.sh start|stop|server DIR}
printer=${PRINTER:-orvenda-test}
command -v cupsd >/dev/null || [ -x /usr/sbin/cupsd ] || {
  echo "the CUPS scheduler (cupsd) is not installed" >&2
  exit 2
}
cupsd_bin=$(command -v cupsd || echo /usr/sbin/cupsd)

case $cmd in
  start)
    mkdir -p "$dir"
    dir=$(cd "$dir" && pwd)
    sock="$dir/cups.sock"
    mkdir -p "$dir/etc/ppd" "$dir/etc/ssl" "$dir/spool/tmp" "$dir/cache" "$dir/state/certs" \
      "$dir/log" "$dir/out"
    # The scheduler hands jobs to the file device as its unprivileged user
    # (lp under root), so the folders it writes to are open to it.
    chmod 0755 "$dir"
    chmod 0777 "$dir/out" "$dir/spool" "$dir/spool/tmp" "$dir/cache" "$dir/log"
    cat >"$dir/etc/cups-files.conf" <<EOF
# Written by scripts/cups.sh: everything under $dir.
FileDevice Yes
ServerRoot $dir/etc
RequestRoot $dir/spool
TempDir $dir/spool/tmp
CacheDir $dir/cache
StateDir $dir/state
AccessLog $dir/log/access_log
ErrorLog $dir/log/error_log
PageLog $dir/log/page_log
ServerBin /usr/lib/cups
DataDir /usr/share/cups
EOF
    if [ "$(id -u)" = 0 ]; then
      printf 'User lp\nGroup lp\nSystemGroup root\n' >>"$dir/etc/cups-files.conf"
    else
      printf 'SystemGroup %s\n' "$(id -gn)" >>"$dir/etc/cups-files.conf"
    fi
    cat >"$dir/etc/cupsd.conf" <<EOF
# Written by scripts/cups.sh: a local socket only, no browsing, no sharing.
Listen $sock
Browsing No
WebInterface No
DefaultAuthType None
LogLevel warn
MaxLogSize 0
PreserveJobHistory Yes
PreserveJobFiles No
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
EOF
    chmod 0644 "$dir/etc/cupsd.conf" "$dir/etc/cups-files.conf"
    if [ -S "$sock" ] && CUPS_SERVER=$sock lpstat -r 2>/dev/null | grep -q "is running"; then
      : # already running
    else
      rm -f "$sock"
      # In the foreground of a process of its own, so that its id is known
      # and stop ends exactly this scheduler.
      setsid "$cupsd_bin" -f -c "$dir/etc/cupsd.conf" -s "$dir/etc/cups-files.conf" \
        </dev/null >"$dir/log/cupsd.out" 2>&1 &
      echo $! >"$dir/cupsd.pid"
      for _ in $(seq 1 100); do
        [ -S "$sock" ] && CUPS_SERVER=$sock lpstat -r 2>/dev/null | grep -q "is running" && break
        sleep 0.1
      done
      CUPS_SERVER=$sock lpstat -r 2>/dev/null | grep -q "is running" || {
        echo "cupsd did not start; its log:" >&2
        cat "$dir/log/error_log" >&2 2>/dev/null || true
        exit 1
      }
    fi
    # The queue, enabled and accepting, whatever state an earlier run left.
    # A raw queue (no model) would be simpler, but CUPS runs no program at
    # all for a raw job to a file device and the file never appears; this
    # model makes pdftopdf the one filter, whose PDF lands in the file.
    # lpadmin warns that such models are deprecated: that warning is dropped.
    cat >"$dir/etc/pdf-file.ppd" <<'EOF'
*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*FileVersion: "1.0"
*LanguageVersion: English
*LanguageEncoding: ISOLatin1
*PCFileName: "PDFFILE.PPD"
*Manufacturer: "Generic"
*Product: "(PDF file)"
*ModelName: "PDF file"
*ShortNickName: "PDF file"
*NickName: "PDF file"
*PSVersion: "(3010.000) 0"
*LanguageLevel: "3"
*ColorDevice: True
*DefaultColorSpace: RGB
*FileSystem: False
*Throughput: "1"
*TTRasterizer: Type42
*cupsFilter2: "application/vnd.cups-pdf application/pdf 0 -"
*OpenUI *PageSize/Page Size: PickOne
*DefaultPageSize: Letter
*PageSize Letter/Letter: "<</PageSize[612 792]>>setpagedevice"
*CloseUI: *PageSize
*DefaultImageableArea: Letter
*ImageableArea Letter: "0 0 612 792"
*DefaultPaperDimension: Letter
*PaperDimension Letter: "612 792"
EOF
    CUPS_SERVER=$sock lpadmin -p "$printer" -E -v "file://$dir/out/$printer.prn" \
      -P "$dir/etc/pdf-file.ppd" 2>/dev/null
    CUPS_SERVER=$sock cupsenable "$printer"
    CUPS_SERVER=$sock cupsaccept "$printer"
    echo "$sock"
    ;;
  stop)
    dir=$(cd "$dir" && pwd)
    if [ -f "$dir/cupsd.pid" ]; then
      pid=$(cat "$dir/cupsd.pid")
      kill "$pid" 2>/dev/null || true
      for _ in $(seq 1 50); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
    fi
    rm -f "$dir/cupsd.pid" "$dir/cups.sock"
    ;;
  server)
    dir=$(cd "$dir" && pwd)
    echo "$dir/cups.sock"
    ;;
  *) echo "usage: cups.sh start|stop|server DIR" >&2; exit 2 ;;
esac
