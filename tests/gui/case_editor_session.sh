#!/usr/bin/env bash
# A user's session with the case editor on a real X server (Xvfb), driven by xdotool:
# open an old sample (the upgrade message appears), open a section, change a value and cancel
# (the value is restored), change it again and confirm, switch to Imperial units, save, and read
# the saved case back: the value is the one typed, shown in Imperial units.
#   tests/gui/case_editor_session.sh DEMO SAMPLES_DIR
# Exits 77 (skipped) without Xvfb or xdotool.
set -euo pipefail
demo=$1
samples=$2
command -v Xvfb >/dev/null && command -v xdotool >/dev/null || { echo "Xvfb or xdotool missing: skipped"; exit 77; }

work=$(mktemp -d)
export HOME=$work XDG_CONFIG_HOME=$work/config XDG_RUNTIME_DIR=$work/run
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
# Xvfb picks a free display itself and writes its number once it accepts clients, so parallel
# runs neither collide nor start the editor too early.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$work/display" >/dev/null 2>&1 &
xvfb=$!
app=
cleanup() {
  [ -n "$app" ] && kill "$app" 2>/dev/null || true
  kill "$xvfb" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
for _ in $(seq 300); do [ -s "$work/display" ] && break; sleep 0.1; done
[ -s "$work/display" ] || { echo "FAIL: Xvfb did not start within 30 s"; exit 1; }
display=:$(head -n 1 "$work/display")
export DISPLAY=$display QT_QPA_PLATFORM=xcb
unset LD_PRELOAD
for _ in $(seq 50); do xdotool getmouselocation >/dev/null 2>&1 && break; sleep 0.1; done

# With QXNUM_GUI_SHOTS=DIR, a screenshot of the screen goes there when a step fails.
fail() {
  echo "FAIL: $*"
  if [ -n "${QXNUM_GUI_SHOTS:-}" ] && command -v import >/dev/null; then
    import -window root "$QXNUM_GUI_SHOTS/failure.png" || true
  fi
  exit 1
}
# Keys and text go to the window with the input focus (XTEST), as a user's would; the first
# argument names the window meant, for the reader.
# The visible window of the editor whose name matches $1 (waits up to 10 s).
window() {
  local w
  for _ in $(seq 100); do
    w=$(xdotool search --onlyvisible --pid "$app" --name "$1" 2>/dev/null | tail -n 1) && [ -n "$w" ] && {
      sleep 0.8 # until the window is active and has its focus widget
      echo "$w"
      return
    }
    sleep 0.1
  done
  fail "no window named '$1'"
}
# Waits until the window named $1 no longer has the input focus (closed; without a window manager
# an unmapped Qt dialog may still be listed as viewable for a while).
gone() {
  for _ in $(seq 100); do
    case "$(xdotool getwindowname "$(xdotool getwindowfocus)" 2>/dev/null)" in
    $2) ;;
    *) sleep 0.3; return 0 ;;
    esac
    sleep 0.1
  done
  fail "window '$2' did not close"
}
keys() { xdotool key --delay 60 "${@:2}"; sleep 0.3; }
text() { xdotool type --delay 60 "$2"; sleep 0.3; }
field() { "$demo" --print "$work/case.xml" 2>/dev/null | grep "^$1 = " || true; }

cp "$samples/engine-v1.xml" "$work/case.xml"
"$demo" "$work/case.xml" &
app=$!

# The old sample: the library's upgrade message, before the window.
box=$(window '^Warning$')
keys "$box" Return
main=$(window 'case editor')
xdotool windowfocus --sync "$main"

# Ambient conditions, first in the Sections menu: type a pressure and cancel.
keys "$main" alt+s Return
dlg=$(window '^Ambient conditions$')
keys "$dlg" Tab ctrl+a
text "$dlg" "0.8"
keys "$dlg" Escape
gone '^Ambient conditions$' 'Ambient conditions'
xdotool windowfocus --sync "$main"
keys "$main" ctrl+s
sleep 0.5
[ "$(field Ambient.Pamb)" = "Ambient.Pamb = 0.950 [bar]" ] || fail "Cancel kept a value: $(field Ambient.Pamb)"

# Again, and confirm with Enter (OK is the default button).
keys "$main" alt+s Return
dlg=$(window '^Ambient conditions$')
keys "$dlg" Tab ctrl+a
text "$dlg" "1.2"
keys "$dlg" Return
gone '^Ambient conditions$' 'Ambient conditions'

# Imperial units for the whole case, save, quit.
xdotool windowfocus --sync "$main"
keys "$main" alt+u Down Return
keys "$main" ctrl+s
sleep 0.5
keys "$main" ctrl+q
for _ in $(seq 50); do kill -0 "$app" 2>/dev/null || break; sleep 0.1; done
kill -0 "$app" 2>/dev/null && fail "the editor did not quit"
app=

got=$(field Ambient.Pamb)
[ "$got" = "Ambient.Pamb = 17.405 [psi]" ] || fail "after reopening: '$got'"
grep -q 'units="Imperial"' "$work/case.xml" || fail "the case file does not keep the units"
grep -q 'ID="Rating" ClassName="TRadioGrpFld"' "$work/case.xml" || fail "Rating is not written as the form has it"
grep -q -E 'ID="(Power|BleedFlow)"' "$work/case.xml" && fail "elements of the old version were kept"
echo "case editor session: ok ($got)"
