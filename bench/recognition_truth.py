#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes subtitles with known letters: sentences in twelve languages out of the translations that
Debian ships with its own programs, one subtitle a line, rows parted by '|'.

usage: recognition_truth.py FOLDER    writes FOLDER/LANGUAGE.txt; downloads three packages once
"""
import gettext
import pathlib
import random
import re
import subprocess
import sys
import unicodedata

PACKAGES = ["libgtk-3-common", "nautilus-data", "gnome-control-center-data",
            "evolution-data-server-common"]
LANGUAGES = {"eng": "", "deu": "de", "fra": "fr", "spa": "es", "pol": "pl", "ces": "cs",
             "swe": "sv", "tur": "tr", "ell": "el", "rus": "ru", "heb": "he", "ara": "ar"}
ROW = 36  # letters
# What a translator's tool wants and a viewer never sees.
UNWANTED = re.compile(r"[%{}<>\\|_\x00-\x1f$#@^~`*=+&/\[\]\u200e\u200f\u2026\u202a-\u202e]|https?:|"
                      r"[\u0591-\u05c7\u064b-\u0652\u0670\u0640\u2066-\u2069]")
# A letter that was lost on the translator's way stands as a question mark within a word.
LOST = re.compile(r"\S\?\S")
LETTERS = {"ell": re.compile(r"[\u0370-\u03ff\u1f00-\u1fff]"), "rus": re.compile(r"[\u0400-\u04ff]"),
           "heb": re.compile(r"[\u05d0-\u05ea]"), "ara": re.compile(r"[\u0621-\u064a]")}
LATIN = re.compile(r"[A-Za-z]")


def unpack(folder):
    if not list(folder.glob("*.deb")):
        subprocess.run(["apt-get", "download", "-qq", *PACKAGES], cwd=folder, check=True)
    for package in folder.glob("*.deb"):
        subprocess.run(["dpkg-deb", "-x", package, folder / "unpacked"], check=True)
    return folder / "unpacked/usr/share/locale"


def sentences(locales, language, code):
    found = set()
    for path in sorted((locales / (code or "de") / "LC_MESSAGES").glob("*.mo")):
        if "timezones" in path.name:
            continue
        with open(path, "rb") as file:
            catalogue = gettext.GNUTranslations(file)._catalog
        for key, value in catalogue.items():
            text = key if not code else value
            if isinstance(text, str) and isinstance(key, str) and wanted(text, language):
                found.add(text.strip())
    return sorted(found)


def wanted(text, language):
    text = text.strip()
    if UNWANTED.search(text) or LOST.search(text) or not 14 <= len(text) <= 2 * ROW + 20 or text.count(" ") < 2:
        return False
    if not text.isprintable() or "  " in text:
        return False
    if language in LETTERS:
        return bool(LETTERS[language].search(text)) and not LATIN.search(text)
    return not re.search(r"[\u0370-\u06ff]", text)


def rows(text):
    lines = [""]
    for word in text.split():
        if lines[-1] and len(lines[-1]) + 1 + len(word) > ROW:
            lines.append("")
        lines[-1] += (" " if lines[-1] else "") + word
    return lines


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    locales = unpack(folder)
    for language, code in LANGUAGES.items():
        subtitles = ["|".join(rows(text)) for text in sentences(locales, language, code)]
        subtitles = [text for text in subtitles if text.count("|") <= 1]
        random.Random(language).shuffle(subtitles)
        (folder / f"{language}.txt").write_text(unicodedata.normalize("NFC", "\n".join(subtitles) + "\n"), encoding="utf-8")
        print(f"{language}: {len(subtitles)} subtitles")


if __name__ == "__main__":
    main()
