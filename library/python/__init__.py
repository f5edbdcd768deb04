# SPDX-License-Identifier: MIT
"""Subtitles of broadcast recordings as timed cues.

    import txsub

    for cue in txsub.open("news.ts").service("deu"):
        print(cue.start, cue.text)
"""

from ._txsub import Cue, Error, Input, Line, Picture, Run, Service, Writer, open, version

__all__ = ["Cue", "Error", "Input", "Line", "Picture", "Run", "Service", "Writer", "open", "version"]
