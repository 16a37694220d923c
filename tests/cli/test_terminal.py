#!/usr/bin/env python3
"""test_terminal.py: fmhost at a real terminal (a pseudo-terminal), as a person uses it:
the banner, Tab completing a function's name, and a terminal dialog that leaves the line
typed ahead of it to the prompt instead of taking it as its answer.
Usage: test_terminal.py FMHOST"""
import os, pty, select, sys, tempfile, time

fmhost = sys.argv[1]
folder = tempfile.mkdtemp(prefix="tpx1-terminal-")
app = os.path.join(folder, "FileMaker")
open(app, "w").close()
env = {k: v for k, v in os.environ.items() if not k.startswith("TPX1_DIALOG")}
env.update(TPX1_APP_PATH=app, TERM="dumb", HOME=folder)

pid, fd = pty.fork()
if pid == 0:
    os.execve(fmhost, [fmhost], env)

seen, pos = b"", 0
def wait_for(text, seconds=20):
    """Reads the terminal until text shows after the last text waited for; fails on time."""
    global seen, pos
    deadline = time.time() + seconds
    while text.encode() not in seen[pos:]:
        if time.time() > deadline or not select.select([fd], [], [], deadline - time.time())[0]:
            sys.exit("FAILED: no %r at the terminal; it showed:\n%s" % (text, seen.decode(errors="replace")))
        try:
            seen += os.read(fd, 4096)
        except OSError:
            sys.exit("FAILED: fmhost ended before %r; it showed:\n%s" % (text, seen.decode(errors="replace")))
    pos = seen.index(text.encode(), pos) + len(text)

try:
    wait_for("help")                                   # the banner says how to get help
    wait_for("> ")
    os.write(fd, b'TPX1Vers\t)\r')                      # Tab completes the name and its "("
    wait_for('"TOPOLUX plugin ver 8.0"')
    # The dialog's line and the next one are typed at once: the second is not the answer.
    os.write(fd, b'TPX1ShowMessage("Typed ahead")\rTPX1Ascii2Char("66") & "ee"\r')
    wait_for("Return = *")
    end = time.time() + 0.5                            # whatever the dialog does meanwhile
    while select.select([fd], [], [], max(0, end - time.time()))[0]:
        seen += os.read(fd, 4096)
    if b"-> " in seen[pos:]:
        sys.exit("FAILED: the line typed ahead answered the dialog:\n" + seen.decode(errors="replace"))
    os.write(fd, b"\r")                                # now the dialog is answered
    wait_for("-> 1")
    wait_for('"Bee"')                                  # and the line typed ahead still runs
    os.write(fd, b"quit\r")
    os.waitpid(pid, 0)
finally:
    try:
        os.kill(pid, 9)
    except ProcessLookupError:
        pass
    for name in os.listdir(folder):
        os.unlink(os.path.join(folder, name))
    os.rmdir(folder)
print("terminal: banner, Tab completion and typed-ahead input are as expected")
