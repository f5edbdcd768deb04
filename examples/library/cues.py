#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Prints what a recording's subtitles say, service by service:  cues.py news.ts [SERVICE]"""

import sys
from collections import defaultdict

import txsub


def main() -> int:
    if len(sys.argv) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        cues = txsub.open(sys.argv[1], warn=lambda message: print(message, file=sys.stderr))
    except txsub.Error as error:
        print(error, file=sys.stderr)
        return 1
    said = defaultdict(list)
    for cue in cues.service(sys.argv[2]) if len(sys.argv) > 2 else cues:
        said[cue.service.name].append(f"{cue.start:9.3f}  {cue.text or 'a picture'}")
    for name, lines in said.items():
        print(name, *lines, sep="\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
