#!/usr/bin/env python3
"""Writes a program's manual page from its own --help texts, so that the two
never disagree.

    make-man.py PROGRAM OUT.1 SUMMARY [--commands]

With --commands the program is a command tool: each command listed under
"commands:" in its --help gets a section made from 'PROGRAM help COMMAND'.
"""
import datetime
import os
import re
import subprocess
import sys


def run(program, *arguments):
    environment = dict(os.environ, QT_QPA_PLATFORM="offscreen")
    done = subprocess.run([program, *arguments], capture_output=True, text=True,
                          env=environment, check=False)
    # Programs that name themselves by the path they were started from.
    return done.stdout.replace(program, os.path.basename(program))


def roff(text):
    """Text as roff lines: backslashes and leading dots and quotes escaped."""
    lines = []
    for line in text.rstrip("\n").split("\n"):
        line = line.replace("\\", "\\e").replace("-", "\\-")
        if line.startswith((".", "'")):
            line = "\\&" + line
        lines.append(line)
    return "\n".join(lines)


def preformatted(text):
    return ".nf\n" + roff(text) + "\n.fi\n"


def main():
    program, out, summary = sys.argv[1], sys.argv[2], sys.argv[3]
    with_commands = "--commands" in sys.argv[4:]
    name = os.path.basename(program)
    version = run(program, "--version").strip().split()[-1]
    usage = run(program, "--help")
    date = os.environ.get("SOURCE_DATE_EPOCH")
    day = (datetime.datetime.fromtimestamp(int(date), datetime.timezone.utc) if date
           else datetime.datetime.now(datetime.timezone.utc)).strftime("%Y-%m-%d")
    page = [f'.TH {name.upper()} 1 "{day}" "ZephyrPopup {version}" "User Commands"',
            ".SH NAME", f"{roff(name)} \\- {roff(summary)}",
            ".SH SYNOPSIS", preformatted(usage)]
    if with_commands:
        listed = re.search(r"^commands:\n((?:  \S.*\n)+)", usage, re.MULTILINE)
        commands = [line.split()[0] for line in listed.group(1).splitlines()] if listed else []
        if not commands:
            sys.exit(f"{name}: --help lists no commands")
        page.append(".SH COMMANDS")
        for command in commands:
            page += [f".SS {command}", preformatted(run(program, "help", command))]
    page += [".SH VERSION", f"{roff(name)} {version}"]
    with open(out, "w", encoding="utf-8") as file:
        file.write("\n".join(page) + "\n")


if __name__ == "__main__":
    main()
