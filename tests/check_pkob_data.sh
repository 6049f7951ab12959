#!/usr/bin/env bash
# What pkob shows and draws of data sections: the pictures say what the source says, JSON is JSON, and a
# damaged record gives a line and status 1, whichever byte it is.
# usage: check_pkob_data.sh EXAMPLES_DIRECTORY TOLL PKOB
set -uo pipefail
examples=$1 toll=$2 pkob=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" || exit 1
failed=0
is() { "$@" || { echo "not so: $*"; failed=1; }; }

"$toll" "$examples/harness.tl" || exit 1
"$pkob" --svg=pictures harness.kob
is [ "$(ls pictures | wc -l)" -eq 5 ]
if command -v xmllint >/dev/null; then is xmllint --noout pictures/*.svg; fi
is grep -q '>View plug_face (Removable, Front)<' pictures/HARNESS.plug.svg
is [ "$(grep -c '<circle' pictures/HARNESS.plug.svg)" -eq 10 ] # eight points, two in the legend
is [ "$(grep -c 'fill="white"/>$' pictures/HARNESS.plug.svg)" -eq 10 ] # all female, the legend, the page
is [ "$(grep -c '<circle.*fill="black"/>$' pictures/HARNESS.socket.svg)" -eq 9 ]

# 255 is at the top, 56 pixels down, 0 at the bottom; each sample is a step of the same width.
printf 'MODULE steps\nPRIVATE\nDATA WAVEFORM up\nBEGIN\n    0, 255\n    255, 51\nEND\n' >steps.tl
"$toll" steps.tl
"$pkob" --svg=. steps.kob
is grep -q '<path d="M70 312H262V56H646V260.8H838"' STEPS.up.svg

"$pkob" --json --data harness.kob >harness.json
is python3 - harness.json <<'END'
import json, sys
data = {item["symbol"]: item for item in json.load(open(sys.argv[1]))["data"]}
plug = data["HARNESS.plug"]
pin = next(item for item in plug["items"] if item["name"] == "P8")
point = pin["items"][0]
assert point["name"] == "rail" and point["values"]["sex"] == ["FEMALE"], point
assert point["values"]["signal_name"]["text"] == "RAIL PRESSURE" and point["values"]["line"] == "8", point
assert len(data["HARNESS.injector_current"]["samples"]) == 48
END

# A screen whose END stands among its items has no word that ends it.
printf 'MODULE odd\nPRIVATE\nDATA HELPSCREEN s\nBEGIN\n    MESSAGE {A}\n        END\nEND\n' >odd.tl
"$toll" odd.tl
is "$pkob" --help-screens odd.kob >/dev/null

for wrong in --data=HARNESS.none --svg=harness.kob/x; do
    "$pkob" "$wrong" harness.kob >out 2>err
    is [ $? -eq 1 ] && is [ "$(wc -l <err)" -eq 1 ]
done
"$pkob" --json --help-screens harness.kob >out 2>err
is [ $? -eq 2 ]

# Status 0 or 1 and no more than lines, wherever a byte is wrong or the file ends.
python3 - "$pkob" harness.kob <<'END' || failed=1
import subprocess, sys
pkob, name = sys.argv[1:]
good = open(name, "rb").read()
statuses = set()
def run(what, data):
    open("bad.kob", "wb").write(data)
    result = subprocess.run([pkob, "--data", "--help-screens", "--svg=bad", "bad.kob"], capture_output=True)
    statuses.add(result.returncode)
    if result.returncode not in (0, 1) or (result.returncode == 1) != (result.stderr != b""):
        sys.exit("%s: status %d, %r" % (what, result.returncode, result.stderr[:200]))
for at in range(0, len(good), 11):
    run("byte %d" % at, good[:at] + bytes([good[at] ^ 0xFF]) + good[at + 1:])
for size in range(0, len(good), 97):
    run("%d bytes" % size, good[:size])
sys.exit(statuses != {0, 1})
END
exit $failed
