# SPDX-License-Identifier: MIT
"""Compares WebVTT segments with the truth: stream_peers.py TRUTH.vtt NAME PLAYLIST [NAME PLAYLIST]...

The truth has the programme's own times, in seconds from PTS 0.
"""
import os
import re
import sys

TOLERANCE = 0.04


def seconds(text):
    total = 0.0
    for part in text.split(':'):
        total = total * 60 + float(part)
    return total


def cues_of(text):
    found = []
    for block in re.split(r'\n\n+', text):
        match = re.search(r'^([\d:.]+) --> ([\d:.]+)[^\n]*\n(.*)$', block, re.M | re.S)
        if match:
            found.append((seconds(match[1]), seconds(match[2]), match[3].strip()))
    return found


def plain(text):
    return ' '.join(re.sub(r'<[^>]*>', '', text).split())


def read(playlist):
    """Cues as (segment's start and stop, start, stop, text) by the map; and whether each has one."""
    folder = os.path.dirname(playlist)
    lines = open(playlist, encoding='utf-8').read().split('\n')
    segments = []
    has_map = True
    duration = 0.0
    for line in lines:
        if line.startswith('#EXTINF:'):
            duration = float(line[8:].rstrip(','))
        elif line and not line.startswith('#'):
            text = open(os.path.join(folder, line), encoding='utf-8').read()
            mpegts = re.search(r'MPEGTS:(\d+)', text)
            local = re.search(r'LOCAL:([\d:.]+)', text)
            has_map = has_map and bool(mpegts)
            offset = int(mpegts[1]) / 90000 - seconds(local[1]) if mpegts and local else 0.0
            cues = [(start + offset, stop + offset, body) for start, stop, body in cues_of(text)]
            segments.append((duration, cues))
    return segments, has_map


def judge(truth, playlist):
    segments, has_map = read(playlist)
    start = 10.0  # of the video
    places = []
    for duration, cues in segments:
        places.append((start, start + duration, cues))
        start += duration
    starts = ends = carried = crossing = colours = coloured = 0
    for cue_start, cue_stop, body in truth:
        parts = [cue for _, _, cues in places for cue in cues if plain(cue[2]) == plain(body)]
        starts += bool(parts) and abs(min(part[0] for part in parts) - cue_start) <= TOLERANCE
        ends += bool(parts) and abs(max(part[1] for part in parts) - cue_stop) <= TOLERANCE
        for segment_start, segment_stop, cues in places:
            if cue_start < segment_start < cue_stop:
                crossing += 1
                carried += any(plain(cue[2]) == plain(body) for cue in cues)
        if '<c' in body:
            coloured += 1
            colours += any('<c' in part[2] for part in parts)
    total = len(truth)
    return [f'{len(segments)}', 'yes' if has_map else 'no', f'{starts} of {total}',
            f'{ends} of {total}', f'{carried} of {crossing}', f'{colours} of {coloured}']


def main():
    truth = cues_of(open(sys.argv[1], encoding='utf-8').read())
    print('| | segments | X-TIMESTAMP-MAP | starts within 40 ms | ends | goes on over a boundary | '
          'colours |')
    print('|---|---|---|---|---|---|---|')
    rest = sys.argv[2:]
    for name, playlist in zip(rest[::2], rest[1::2]):
        print('| ' + ' | '.join([name] + judge(truth, playlist)) + ' |')


main()
