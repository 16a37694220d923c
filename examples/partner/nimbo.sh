#!/bin/sh
# nimbo.sh: a stand-in for NIMBO (signature NMB5) in shell. `vesk partner` owns NIMBO's
# bus name, answers "HOLA" with "OKHI" and logs every message (to the file $NIMBO_LOG,
# else standard output); the rule below answers "CALC" with "RSLT". It runs until SIGTERM
# or until the bus goes away.
# exec keeps the process id, by which a host that launched this script knows it.
exec vesk partner --as NMB5 --name "NIMBO (shell)" --log "${NIMBO_LOG:-/dev/stdout}" \
    --rules /dev/stdin "$@" <<'RULES'
on CALC send MSSG=RSLT XTRA=$XTRA PLUM=$XTRA
RULES
