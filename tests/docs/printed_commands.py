#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the commands that a page prints, in order, in an empty directory, and checks what the page says about them.

  printed_commands.py quickstart ROOT BIN   the commands of the section "Quickstart" of README.md
  printed_commands.py quickstart ROOT --build
                                            the same in a copy of the sources that git knows, built as printed
  printed_commands.py formats ROOT BIN      the example of docs/formats.md: the files must equal the hex dumps and the
                                            restart file that the page shows

ROOT is the root of the project, BIN the directory of the built programs. With BIN nothing is installed or compiled:
scripts/setup and cmake are replaced by checks that the script, the preset and the directory that the page names
exist. Ends with 1 and names the line of the page when a command ends with another code than it should.
"""
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile

# Stands in for cmake and scripts/setup: accepts only what would work.
CMAKE = r"""#!/usr/bin/env bash
set -euo pipefail
fail() { echo "$1" >&2; exit 1; }
[ -f CMakePresets.json ] || fail "cmake: no CMakePresets.json in $PWD"
build=no preset=
while [ $# -gt 0 ]; do
  case $1 in
    --build) build=yes ;;
    --preset) shift; preset=$1 ;;
    --preset=*) preset=${1#*=} ;;
    -D?*=* | -j | -j[0-9]*) ;;
    *) fail "cmake: this check does not know $1" ;;
  esac
  shift
done
kind=configurePresets
[ $build = no ] || kind=buildPresets
python3 - "$kind" "$preset" <<'PY' || fail "cmake: CMakePresets.json has no $kind named $preset"
import json, sys
sys.exit(sys.argv[2] not in [p["name"] for p in json.load(open("CMakePresets.json"))[sys.argv[1]]])
PY
mkdir -p "out/$preset"
if [ $build = no ]; then
  touch "out/$preset/configured"
else
  [ -e "out/$preset/configured" ] || fail "cmake: $preset is built before it is configured"
  cp -r "$BUILT" "out/$preset/bin"
fi
"""
SETUP = """#!/usr/bin/env bash
case "$*" in "" | build | demo) ;; *) echo "setup: this check does not know $*" >&2; exit 1 ;; esac
"""


def read_page(root, name, heading):
    """Returns the lines of a section as pairs of line number and text."""
    lines = open(os.path.join(root, name), encoding="utf-8").read().split("\n")
    start = lines.index("## " + heading)
    end = next((i for i in range(start + 1, len(lines)) if lines[i].startswith("## ")), len(lines))
    return [(i + 1, lines[i]) for i in range(start, end)]


def commands_of(section):
    """Returns the commands of the section's blocks marked sh; a line that ends with a backslash goes on."""
    commands, inside, number, text = [], False, 0, ""
    for at, line in section:
        if line.startswith("```"):
            inside = line == "```sh"
            continue
        if not inside or not line.strip() or line.lstrip().startswith("#"):
            continue
        number = number if text else at
        text += line
        if text.endswith("\\"):
            text = text[:-1]
            continue
        commands.append((number, text))
        text = ""
    return commands


def expected_code(command):
    """A command that kills a load says so itself; every other one must succeed."""
    if re.search(r"\btimeout -s KILL\b", command):
        return 128 + signal.SIGKILL
    if "SPOOLMQ_FAULTS=" in command:
        return 9
    return 0


def run(page, commands, directory, environment):
    """Runs the commands in one shell. Returns what they print and the directory in which they end."""
    script = ""
    for number, command in commands:
        script += f"{command}\ncode=$?\n"
        script += f'if [ $code -ne {expected_code(command)} ]; then echo "{page}:{number}: ended with $code"; exit 1; fi\n'
    script += 'printf "\\nended in %s\\n" "$PWD"\n'
    done = subprocess.run(["bash", "-c", script], cwd=directory, env=environment, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, timeout=1500, check=False)
    if done.returncode != 0:
        sys.exit(done.stdout)
    return done.stdout, re.search(r"^ended in (.*)$", done.stdout, re.M)[1]


def copy_sources(root, clone):
    names = subprocess.run(["git", "-C", root, "ls-files", "-z"], stdout=subprocess.PIPE, check=True).stdout
    subprocess.run(["rsync", "-a", "--from0", "--files-from=-", root + "/", clone + "/"] if shutil.which("rsync")
                   else ["bash", "-c", f'tar -C "{root}" --null -T - -cf - | tar -C "{clone}" -xf -'], input=names, check=True)


def test_quickstart(root, built, work):
    commands = commands_of(read_page(root, "README.md", "Quickstart"))
    clone = os.path.join(work, "clone")
    os.mkdir(clone)
    environment = dict(os.environ, TMPDIR=work)
    if built == "--build":
        copy_sources(root, clone)
    else:
        os.mkdir(os.path.join(clone, "scripts"))
        shutil.copy(os.path.join(root, "CMakePresets.json"), clone)
        tools = os.path.join(work, "tools")
        os.mkdir(tools)
        for path, text in ((os.path.join(tools, "cmake"), CMAKE), (os.path.join(clone, "scripts", "setup"), SETUP)):
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
            os.chmod(path, 0o755)
        if not os.access(os.path.join(root, "scripts", "setup"), os.X_OK):
            sys.exit("scripts/setup is missing")
        # Only the programs that the quickstart builds are copied, so that it cannot use another one.
        programs = os.path.join(work, "programs")
        os.mkdir(programs)
        for name in ("mqam", "libmqamod.so", "libmqamjournal.so"):
            shutil.copy(os.path.join(built, name), programs)
        shutil.copytree(os.path.join(built, "spoolmq"), os.path.join(programs, "spoolmq"))
        environment.update(PATH=tools + ":" + os.environ["PATH"], BUILT=programs)
    output, _ = run("README.md", commands, clone, environment)
    killed = [command for _, command in commands if expected_code(command) != 0]
    for want in ("the load is done", "\nidentical\n"):
        if want not in output:
            sys.exit(output + f"\nREADME.md: the quickstart does not print {want.strip()!r}")
    if not killed:
        sys.exit("README.md: the quickstart kills no load")
    print(f"{len(commands)} commands of README.md run as printed")


def dump(data):
    """Returns bytes as the pages print them."""
    lines = []
    for at in range(0, len(data), 16):
        row = data[at:at + 16]
        left, right = (" ".join(f"{b:02x}" for b in half) for half in (row[:8], row[8:]))
        text = "".join(chr(b) if 32 <= b < 127 else "." for b in row)
        lines.append(f"{at:08x}  {left:<23}  {right:<23}  |{text}|")
    return lines + [f"{len(data):08x}"]


def digest_of(data):
    digest = 0xcbf29ce484222325
    for byte in data:
        digest = (digest ^ byte) * 0x100000001b3 % 2**64
    return f"{digest:016x}"


def test_formats(root, built, work):
    page = "docs/formats.md"
    commands = [(n, c.replace("/tmp/load", work + "/load")) for n, c in commands_of(read_page(root, page, "The example"))]
    environment = dict(os.environ, PATH=built + ":" + os.environ["PATH"],
                       MQAMOD_MQ_LIBRARY=os.path.join(built, "spoolmq", "libmqm_r.so"))
    output, directory = run(page, commands, work, environment)
    text = open(os.path.join(root, page), encoding="utf-8").read()

    def require(expected, what):
        if expected not in text:
            sys.exit(f"{output}\n{page} does not show {what} as it is:\n{expected}")

    for name in ("orders.ckpt", "orders.log", "orders.txt"):
        require("```\n" + "\n".join(dump(open(os.path.join(directory, name), "rb").read())) + "\n```", name)

    # The time and the directory differ from run to run, and so does the checksum.
    stored = open(os.path.join(directory, "orders.restart"), encoding="utf-8").read().replace(work + "/load", "/tmp/load")
    begun = re.search(r"^begun=\d{4}-\d\d-\d\d \d\d:\d\d:\d\d UTC\n", text, re.M)[0]
    stored = re.sub(r"^begun=.*\n", lambda _: begun, stored, flags=re.M)
    body = stored[:stored.rindex("checksum=")]
    require(f"```\n{body}checksum={digest_of(body.encode())}\n```", "orders.restart")
    position = bytes.fromhex(re.search(r"^position=(\w+)$", stored, re.M)[1])
    require("```\n" + dump(position)[0].split("  |")[0].rstrip() + "\n```", "the position")
    print(f"5 examples of {page} are as on the disk")


def main():
    if len(sys.argv) != 4 or sys.argv[1] not in ("quickstart", "formats"):
        sys.exit(__doc__)
    root, built = os.path.abspath(sys.argv[2]), sys.argv[3]
    built = built if built == "--build" else os.path.abspath(built)
    with tempfile.TemporaryDirectory(prefix="mqamod-docs.") as work:
        (test_quickstart if sys.argv[1] == "quickstart" else test_formats)(root, built, work)


main()
