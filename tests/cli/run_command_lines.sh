#!/bin/sh
# run_command_lines.sh: the command lines of fmhost and vesk as users type them: options
# with "=" and "--", the messages and exit statuses of mistakes, each command's help,
# the prompt's help, and vesk without a session bus, with one it cannot reach, and with
# a private one. Usage: run_command_lines.sh FMHOST VESK
set -u
fmhost=$1
vesk=$2
work_name=command-lines
. "$(dirname "$0")/../common/private-bus.sh"
failed=0

# check STATUS TEXT COMMAND...: COMMAND exits with STATUS and its output holds TEXT.
check() {
    want=$1 text=$2
    shift 2
    "$@" > "$work/out" 2>&1
    got=$?
    if [ "$got" -ne "$want" ] || ! grep -qF -- "$text" "$work/out"; then
        echo "FAILED: $* (exit $got, wanted $want and \"$text\"):"
        sed 's/^/    /' "$work/out"
        failed=$((failed + 1))
    fi
}

export TPX1_DIALOG_LOG="$work/dialogs.log" TPX1_APP_PATH="$work/FileMaker"
: > "$work/FileMaker"
plugin=$(dirname "$fmhost")/tpx1.fmx

check 0 '"TOPOLUX plugin ver 8.0"' "$fmhost" --plugin="$plugin" --idle-ms=10 -e 'TPX1Version()'
check 0 '"TOPOLUX plugin ver 8.0"' "$fmhost" -e 'TPX1Version()' --plugin "$plugin"
check 0 'usage: fmhost' "$fmhost" --help
check 0 'fmhost 8.0' "$fmhost" --version
check 2 'fmhost: --plugin needs a path' "$fmhost" --plugin
check 2 'fmhost: --idle-ms needs a number of milliseconds, not "x"' "$fmhost" --idle-ms=x
check 2 'fmhost: --leaks takes no value' "$fmhost" --leaks=yes
check 2 'fmhost: unknown or ambiguous option --fail' "$fmhost" --fail=3
check 2 'fmhost: -e needs a calculation' "$fmhost" -e
check 2 "fmhost: cannot read $work/none.fmh: No such file or directory" "$fmhost" "$work/none.fmh"
check 2 'fmhost: cannot read -x.fmh: No such file or directory' "$fmhost" -- -x.fmh
check 2 'give either a script file or -e' "$fmhost" -e '1' "$work/none.fmh"
check 2 'fmhost: cannot load plug-in' "$fmhost" --plugin="$work/none.fmx" -e '1'
echo 'help' > "$work/help.in"
check 0 '23 TPX1SetGlobal(name|value) - creates or replaces a global' sh -c "\"$fmhost\" < \"$work/help.in\""
echo 'help tpx1getnthline' > "$work/help.in"
check 0 'External(62 ; "n|text")' sh -c "\"$fmhost\" < \"$work/help.in\""

check 2 'usage: vesk COMMAND' "$vesk"
check 2 'vesk: unknown command "bogus"' "$vesk" bogus
check 0 'usage: vesk send --to=SIG' "$vesk" send --help
check 0 'usage: vesk listen --as=SIG' "$vesk" help listen
check 2 'vesk send: --to needs a value' "$vesk" send --to
check 2 'vesk send: "TOOLONG" is not a signature' "$vesk" send --to=TOOLONG MSSG=HOLA
check 2 'vesk send: expected KEY=VALUE, not "MSSG"' "$vesk" send --to=TPX1 MSSG
check 2 'vesk ps: unexpected argument "all"' "$vesk" ps all
check 2 'vesk partner: --as SIG is required' "$vesk" partner
check 2 "$work/none.txt: cannot read it: No such file or directory" "$vesk" partner --as=TPX1 --rules="$work/none.txt"
check 1 'DBUS_SESSION_BUS_ADDRESS is not set' env -u DBUS_SESSION_BUS_ADDRESS XDG_RUNTIME_DIR="$work" "$vesk" ps
check 1 'vesk send: cannot reach the session bus' env DBUS_SESSION_BUS_ADDRESS="unix:path=$work/none" "$vesk" send --to=TPX1 MSSG=HOLA

if private_bus; then
    check 0 'SIG    PID' "$vesk" ps
    check 1 "vesk send: sending to 'NONE' failed: error -600" "$vesk" send --from=FMP7 --to=NONE -- MSSG=HOLA
fi

[ "$failed" -eq 0 ] && echo "command lines: all passed"
[ "$failed" -eq 0 ]
