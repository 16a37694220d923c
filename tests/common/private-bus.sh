# private-bus.sh: sourced by the shell tests. Makes the temporary folder $work (named
# after $work_name), removed at exit together with the bus below, and defines
# private_bus: starts a private dbus-daemon in $work and exports its address as
# DBUS_SESSION_BUS_ADDRESS; false when dbus-daemon is missing or does not start.
work=$(mktemp -d "/tmp/${work_name:-tpx1-test}.XXXXXX") || exit 2
bus_pid=
cleanup() {
    [ -n "$bus_pid" ] && kill "$bus_pid" 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT INT TERM

private_bus() {
    command -v dbus-daemon >/dev/null 2>&1 || return 1
    dbus-daemon --session --address="unix:dir=$work" --print-address=1 --print-pid=1 --fork \
        > "$work/bus" 2>/dev/null || return 1
    bus_pid=$(sed -n 2p "$work/bus")
    DBUS_SESSION_BUS_ADDRESS=$(sed -n 1p "$work/bus")
    export DBUS_SESSION_BUS_ADDRESS
}
