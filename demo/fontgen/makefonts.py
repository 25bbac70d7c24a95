#!/usr/bin/python3
"""Builds the demo's chess fonts: simple piece shapes on the letters K Q R B N P (white)
and k q r b n p (black), as chess fonts map them. Debian's python3-fonttools is enough.

    /usr/bin/python3 demo/fontgen/makefonts.py demo/install/fonts

writes pwkfigur.ttf ("Pawnsketch Figurine") and pwkdiagr.ttf ("Pawnsketch Diagramm").
The files are committed; run this again only to change them.
"""
import os
import sys

from fontTools.fontBuilder import FontBuilder
from fontTools.pens.ttGlyphPen import TTGlyphPen

UPM = 1000
# Outlines on a 1000-unit square: each piece a few polygons, clockwise.
PIECES = {
    "K": [[(200, 100), (800, 100), (700, 600), (300, 600)], [(450, 600), (550, 600), (550, 900), (450, 900)],
          [(350, 720), (650, 720), (650, 800), (350, 800)]],
    "Q": [[(200, 100), (800, 100), (850, 700), (650, 450), (500, 800), (350, 450), (150, 700)]],
    "R": [[(250, 100), (750, 100), (750, 800), (650, 800), (650, 700), (550, 700), (550, 800), (450, 800),
           (450, 700), (350, 700), (350, 800), (250, 800)]],
    "B": [[(250, 100), (750, 100), (500, 850)]],
    "N": [[(250, 100), (750, 100), (700, 700), (500, 850), (250, 600), (450, 550), (300, 350)]],
    "P": [[(300, 100), (700, 100), (600, 450), (650, 600), (500, 720), (350, 600), (400, 450)]],
}


def glyph(polygons, hollow):
    pen = TTGlyphPen(None)
    for poly in polygons:
        pen.moveTo(poly[0])
        for point in poly[1:]:
            pen.lineTo(point)
        pen.closePath()
        if hollow:  # a white piece: an inner contour the other way round
            cx = sum(p[0] for p in poly) / len(poly)
            cy = sum(p[1] for p in poly) / len(poly)
            inner = [(int(cx + (x - cx) * 0.7), int(cy + (y - cy) * 0.7)) for x, y in reversed(poly)]
            pen.moveTo(inner[0])
            for point in inner[1:]:
                pen.lineTo(point)
            pen.closePath()
    return pen.glyph()


def build(path, family):
    order = [".notdef", "space"] + list(PIECES) + [c.lower() for c in PIECES]
    fb = FontBuilder(UPM, isTTF=True)
    fb.setupGlyphOrder(order)
    cmap = {ord(" "): "space"}
    cmap.update({ord(c): c for c in order[2:]})
    fb.setupCharacterMap(cmap)
    glyphs = {".notdef": glyph([[(100, 0), (900, 0), (900, 900), (100, 900)]], True),
              "space": TTGlyphPen(None).glyph()}
    for name, polys in PIECES.items():
        glyphs[name] = glyph(polys, True)
        glyphs[name.lower()] = glyph(polys, False)
    fb.setupGlyf(glyphs)
    fb.setupHorizontalMetrics({name: (UPM, 0) for name in order})
    fb.setupHorizontalHeader(ascent=900, descent=-100)
    fb.setupNameTable({"familyName": family, "styleName": "Regular",
                       "uniqueFontIdentifier": family.replace(" ", "") + "-Regular",
                       "fullName": family, "psName": family.replace(" ", "") + "-Regular",
                       "version": "Version 1.0"})
    fb.setupOS2(sTypoAscender=900, sTypoDescender=-100, usWinAscent=900, usWinDescent=100)
    fb.setupPost()
    fb.save(path)


if __name__ == "__main__":
    out = sys.argv[1] if len(sys.argv) > 1 else "."
    os.makedirs(out, exist_ok=True)
    build(os.path.join(out, "pwkfigur.ttf"), "Pawnsketch Figurine")
    build(os.path.join(out, "pwkdiagr.ttf"), "Pawnsketch Diagramm")
