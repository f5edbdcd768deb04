# SPDX-License-Identifier: MIT
"""What Python adds to the library: lifetimes, errors, and the cues of one service."""

import gc
import sys
from pathlib import Path

import txsub

samples, scratch = Path(sys.argv[1]), Path(sys.argv[2])

cues = list(txsub.open(samples / "captions.ts", page="CC1"))
gc.collect()  # the input is gone; its cues and services are not
assert len(cues) == 9 and cues[0].service.name == "CC1" and cues[0].service.kind == "captions"
assert "".join(run.text for run in cues[0].lines[0].runs) == "Good evening. This is"

with txsub.Writer(scratch / "out.srt", cues[0].service) as writer:
    for cue in cues:
        writer.add(cue)
assert (scratch / "out.srt").read_text(encoding="utf-8").count(" --> ") == 9

try:
    with txsub.Writer(scratch / "broken.srt", cues[0].service) as writer:
        raise KeyError
except KeyError:
    assert not (scratch / "broken.srt").exists()

picture = next(txsub.open(samples / "dvb.ts")).picture
assert picture is not None and len(picture.rgba) == picture.width * picture.height * 4

for wrong in (lambda: txsub.open("none.ts"), lambda: txsub.open(samples / "captions.ts", page="x"),
              lambda: txsub.Writer("out.xyz", cues[0].service)):
    try:
        wrong()
    except txsub.Error as error:
        assert str(error)
    else:
        raise AssertionError("no error")

damaged = bytearray((samples / "captions.ts").read_bytes())
damaged[70000:70400] = bytes(400)
(scratch / "damaged.ts").write_bytes(damaged)
messages: list[str] = []
assert len(list(txsub.open(scratch / "damaged.ts", warn=messages.append))) > 10 and messages
