#!/usr/bin/env bash
# The program's usage reports reaching a real server: a recording HTTP server on the loopback is
# set as the analytics server; the program starts (begin session with its metrics), opens a
# document and runs two shows (three events, sent together), then quits and keeps its queue file.
# Usage: analytics_e2e.sh <tallowbrook binary> <folder for the screenshots>
set -euo pipefail
source "$(dirname "$0")/e2e_lib.sh"

# Records each request as one JSON line and answers as an analytics server does.
cat >"$work/server.py" <<'PY'
import http.server, json, sys
out = open(sys.argv[1], "a")
class Recorder(http.server.BaseHTTPRequestHandler):
    def answer(self, query):
        out.write(json.dumps({"method": self.command, "path": self.path.split("?")[0], "query": query}) + "\n")
        out.flush()
        body = b'{"result":"Success"}'
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)
    def do_GET(self):
        self.answer(self.path.partition("?")[2])
    def do_POST(self):
        self.answer(self.rfile.read(int(self.headers["Content-Length"])).decode())
    def log_message(self, *args):
        pass
server = http.server.HTTPServer(("127.0.0.1", 0), Recorder)
open(sys.argv[2], "w").write(str(server.server_port))
server.serve_forever()
PY
python3 "$work/server.py" "$work/requests.jsonl" "$work/port" &
server=$!
trap 'kill $server 2>/dev/null || true; cleanup' EXIT
waitFor '[ -s "$work/port" ]' || fail "the recording server did not start"
mkdir -p "$XDG_CONFIG_HOME/Tallowbrook"
printf '[General]\nanalyticsServerURL=http://127.0.0.1:%s/\n' "$(cat "$work/port")" >"$XDG_CONFIG_HOME/Tallowbrook/Tallowbrook.conf"

mkdir -p "$work/pictures"
convert -size 400x300 xc:red "$work/pictures/red.png"
writeDocument "$work/Trip.slideshow" 1 false red

# check <python expression over `requests`, a list of (method, path, [(key, value)…])>
check() {
  python3 - "$work/requests.jsonl" "$1" <<'PY'
import json, sys, urllib.parse
requests = []
for line in open(sys.argv[1]):
    r = json.loads(line)
    requests.append((r["method"], r["path"], urllib.parse.parse_qsl(r["query"], keep_blank_values=True)))
def value(request, key):
    return dict(request[2]).get(key)
def events():
    return [e for r in requests if value(r, "events") for e in json.loads(value(r, "events"))]
sys.exit(0 if eval(sys.argv[2]) else 1)
PY
}

startProgram "$work/Trip.slideshow"
waitFor '[ -n "$(windowNamed Tallowbrook)" ]' || fail "no main window"
grep -q "Analytics device ID: " "$log" || fail "no analytics device line"
waitFor 'check "any(value(r, \"begin_session\") == \"1\" for r in requests)"' || fail "no begin-session request"
check '[k for k, _ in requests[0][2]][:9] == ["app_key", "device_id", "t", "timestamp", "hour", "dow", "tz", "sdk_version", "sdk_name"]' ||
  fail "the first request's parameters are out of order: $(head -n 1 "$work/requests.jsonl")"
check 'requests[0][1] == "/i" and value(requests[0], "t") == "2" and value(requests[0], "app_key") == "7c3e91ab24d05f6e8b1a4d2c9f07e36b51c8d4a0"' ||
  fail "the begin-session request is not addressed as expected"
check 'json.loads(value(requests[0], "metrics"))["_os"] == "Linux" and json.loads(value(requests[0], "metrics"))["_resolution"] == "1280x900"' ||
  fail "the metrics are not the display's: $(head -n 1 "$work/requests.jsonl")"

waitFor "grep -q 'Slideshow loaded: 1 images' '$log'" || fail "the document was not loaded"
main=$(windowNamed Tallowbrook)
for show in 1 2; do
  xdotool windowfocus --sync "$main"
  xdotool key ctrl+r
  waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "show $show did not start"
  xdotool windowfocus --sync "$(windowNamed "Tallowbrook Slideshow")"
  xdotool key Escape
  waitFor '[ -z "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "show $show did not end"
  waitFor "[ \$(grep -c 'Audio playback stopped' '$log') -ge $show ]" || fail "show $show did not finish its stop path"
done
# The third event reaches the send threshold: all three go at once, in the order they happened.
waitFor 'check "[e[\"key\"] for e in events()] == [\"slideshowLoadCompleted\", \"slideshowStarted\", \"slideshowStarted\"]"' ||
  fail "the three events did not arrive together: $(cat "$work/requests.jsonl")"
check 'events()[0]["segmentation"]["success"] == "true" and events()[0]["segmentation"]["imageCount"] == "1"' ||
  fail "the load event lacks its values"
check 'sorted(events()[1]["segmentation"]) == sorted(["slideshowSize", "slideshowDelay", "loopEnabled", "shuffleEnabled", "transitionType", "crossfadeDuration", "displayMode", "liveMode", "audioEnabled", "audioTracksCount", "overlayEnabled"])' ||
  fail "the show event lacks its keys: $(tail -n 1 "$work/requests.jsonl")"
check 'events()[0]["peid"] == "" and events()[1]["peid"] == events()[0]["id"] and events()[2]["peid"] == events()[1]["id"]' ||
  fail "the events are not chained"

xdotool windowfocus --sync "$main"
xdotool key ctrl+q
waitFor '! kill -0 "$pid" 2>/dev/null' || fail "the program did not end after Quit"
pid=""
[ -f "$XDG_DATA_HOME/com.tallowbrook.Tallowbrook/Beacon.dat" ] || fail "the queue file was not written at the end"
echo "e2e: begin session with metrics, three events in one request, the queue file kept at quit"
