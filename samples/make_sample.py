#!/usr/bin/env python3
"""Writes the demo's sample documents: bracket.pdf, a small drawing set of a fictitious company, and care.pdf, to
which it links. Run this script after a change and commit the results:
    python3 samples/make_sample.py

The output is uncompressed PDF 1.4 with built-in fonts, readable in an editor and reproducible byte for byte.
"""

import math
import pathlib

A4 = (595.0, 842.0)
SHEET = (595.0, 420.0)  # half of A4, landscape: at 150 % it fills the demo's window

INK = "0.13 0.16 0.20"
BLUE = "0.11 0.33 0.56"
GREY = "0.45 0.48 0.52"
PALE = "0.93 0.95 0.97"
RED = "0.72 0.16 0.14"

# Character widths of Helvetica in thousandths, for right-aligned and centred text.
NARROW = {" ": 278, ".": 278, ",": 278, ":": 278, "-": 333, "/": 278, "(": 333, ")": 333, "i": 222, "l": 222,
          "t": 278, "f": 278, "r": 333, "j": 222, "I": 278, "'": 191, "c": 500, "k": 500, "s": 500, "v": 500, "x": 500,
          "y": 500, "z": 500}
WIDE = {"m": 833, "w": 722, "M": 833, "W": 944, "A": 667, "B": 667, "E": 667, "P": 667, "S": 667, "Q": 778, "O": 778,
        "G": 778, "C": 722, "D": 722, "H": 722, "N": 722, "R": 722, "U": 722, "&": 667}


def text_width(text, size):
    return sum(NARROW.get(c, WIDE.get(c, 556)) for c in text) * size / 1000.0


class Page:
    def __init__(self, size):
        self.size = size
        self.operators = []
        self.links = []

    def add(self, *lines):
        self.operators.extend(lines)

    def text(self, x, y, text, size=10, font="F1", color=INK, align="left"):
        if align == "right":
            x -= text_width(text, size)
        elif align == "centre":
            x -= text_width(text, size) / 2
        escaped = text.replace("\\", r"\\").replace("(", r"\(").replace(")", r"\)")
        self.add(f"BT /{font} {size:g} Tf {color} rg {x:.2f} {y:.2f} Td ({escaped}) Tj ET")

    def link(self, x, y, text, target, size=10):
        """target: a URL, or the number of a page in the same document."""
        self.text(x, y, text, size, color=BLUE)
        width = text_width(text, size)
        self.line(x, y - 1.5, x + width, y - 1.5, 0.5, BLUE)
        self.links.append(((x, y - 3, x + width, y + size), target))

    def line(self, x1, y1, x2, y2, width=1.0, color=INK, dash=""):
        self.add(f"q {width:g} w {color} RG [{dash}] 0 d {x1:.2f} {y1:.2f} m {x2:.2f} {y2:.2f} l S Q")

    def box(self, x, y, w, h, fill=None, stroke=INK, width=1.0):
        paint = "B" if fill and stroke else "f" if fill else "S"
        colors = (f"{fill} rg " if fill else "") + (f"{stroke} RG " if stroke else "")
        self.add(f"q {width:g} w {colors}{x:.2f} {y:.2f} {w:.2f} {h:.2f} re {paint} Q")

    def path(self, points, fill=None, width=1.4, color=INK, close=True):
        steps = [f"{x:.2f} {y:.2f} {'l' if i else 'm'}" for i, (x, y) in enumerate(points)]
        paint = ("b" if fill else "s") if close else "S"
        self.add(f"q {width:g} w {color} RG " + (f"{fill} rg " if fill else "") + " ".join(steps) + f" {paint} Q")

    def circle(self, x, y, r, fill=None, width=1.4, color=INK, dash=""):
        k = 0.5522847 * r
        self.add(f"q {width:g} w {color} RG [{dash}] 0 d " + (f"{fill} rg " if fill else "")
                 + f"{x + r:.2f} {y:.2f} m "
                 + f"{x + r:.2f} {y + k:.2f} {x + k:.2f} {y + r:.2f} {x:.2f} {y + r:.2f} c "
                 + f"{x - k:.2f} {y + r:.2f} {x - r:.2f} {y + k:.2f} {x - r:.2f} {y:.2f} c "
                 + f"{x - r:.2f} {y - k:.2f} {x - k:.2f} {y - r:.2f} {x:.2f} {y - r:.2f} c "
                 + f"{x + k:.2f} {y - r:.2f} {x + r:.2f} {y - k:.2f} {x + r:.2f} {y:.2f} c "
                 + ("b" if fill else "s") + " Q")

    def centre_lines(self, x, y, r):
        for dx, dy in ((r, 0), (0, r)):
            self.line(x - dx, y - dy, x + dx, y + dy, 0.5, RED, "10 2.5 2 2.5")

    def arrow(self, x, y, angle):
        c, s = math.cos(angle), math.sin(angle)
        self.path([(x, y), (x - 6 * c + 1.6 * s, y - 6 * s - 1.6 * c), (x - 6 * c - 1.6 * s, y - 6 * s + 1.6 * c)],
                  fill=BLUE, width=0.3, color=BLUE)

    def dimension_across(self, x1, x2, y, text, from_y):
        for x in (x1, x2):
            self.line(x, from_y, x, y + (4 if y > from_y else -4), 0.4, BLUE)
        self.line(x1, y, x2, y, 0.6, BLUE)
        self.arrow(x1, y, math.pi)
        self.arrow(x2, y, 0)
        self.text((x1 + x2) / 2, y + 3, text, 7.5, color=BLUE, align="centre")

    def dimension_up(self, y1, y2, x, text, from_x):
        for y in (y1, y2):
            self.line(from_x, y, x + (4 if x > from_x else -4), y, 0.4, BLUE)
        self.line(x, y1, x, y2, 0.6, BLUE)
        self.arrow(x, y1, -math.pi / 2)
        self.arrow(x, y2, math.pi / 2)
        self.add(f"BT /F1 7.5 Tf {BLUE} rg 0 1 -1 0 {x - 3:.2f} {(y1 + y2 - text_width(text, 7.5)) / 2:.2f} Tm "
                 f"({text}) Tj ET")

    def hatch(self, x, y, w, h, step=6.0):
        self.add(f"q {x:.2f} {y:.2f} {w:.2f} {h:.2f} re W n 0.5 w {GREY} RG")
        offset = -h
        while offset < w:
            self.add(f"{x + offset:.2f} {y:.2f} m {x + offset + h:.2f} {y + h:.2f} l S")
            offset += step
        self.add("Q")


def header(page, title, number=None):
    width, height = page.size
    page.box(0, height - 70, width, 70, fill=BLUE, stroke=None)
    page.circle(58, height - 35, 16, width=2.2, color="1 1 1")
    page.circle(58, height - 35, 5, fill="1 1 1", width=1, color="1 1 1")
    page.line(58, height - 35, 70, height - 23, 2.2, "1 1 1")
    page.text(86, height - 32, "Harrow & Pike Instruments", 16, "F2", "1 1 1")
    page.text(86, height - 48, "Weather masts, bearings and gauges since 1931", 9, color="0.83 0.89 0.95")
    page.text(width - 42, height - 40, title, 13, "F2", "1 1 1", align="right")
    page.line(42, 46, width - 42, 46, 0.6, GREY)
    page.text(42, 33, f"{title}  -  Pivot bracket 2291-B for weather mast WM-40", 8, color=GREY)
    if number:
        page.text(width - 42, 33, f"Page {number} of 5", 8, color=GREY, align="right")


def rows(page, y, columns, lines, height=20):
    """columns: (x, align) for each; the first line is the heading."""
    left, right = 42, page.size[0] - 42
    for i, line in enumerate(lines):
        if i == 0:
            page.box(left, y - 6, right - left, height, fill=BLUE, stroke=None)
        elif i % 2 == 0:
            page.box(left, y - 6, right - left, height, fill=PALE, stroke=None)
        for (x, align), cell in zip(columns, line):
            page.text(x, y, cell, 9.5, "F2" if i == 0 else "F1", "1 1 1" if i == 0 else INK, align)
        y -= height
    page.line(left, y + height - 6, right, y + height - 6, 0.8, BLUE)
    return y


def cover():
    page = Page(A4)
    header(page, "Drawing set", 1)
    page.text(42, 690, "Pivot bracket", 34, "F2")
    page.text(42, 660, "for weather mast WM-40", 18, color=GREY)
    page.line(42, 640, 553, 640, 2, BLUE)
    y = 612
    for label, value in (("Set", "2291-B, second issue"), ("Ordered by", "Saltmarsh Harbour Office, Pier 4"),
                         ("Drawn by", "E. Pike"), ("Checked by", "R. Harrow"), ("Material", "Cast bronze CB-7, hand finished")):
        page.text(42, y, label, 10, "F2", GREY)
        page.text(140, y, value, 10)
        y -= 19
    page.text(42, 486, "Contents", 15, "F2")
    y = 460
    for number, title in ((2, "Drawing of the bracket, two views and section"), (3, "Parts list"),
                          (4, "Invoice 2291"), (5, "Inspection record and references")):
        page.link(42, y, title, number, 11)
        page.text(553, y, str(number), 11, align="right")
        page.line(50 + text_width(title, 11), y, 540, y, 0.4, GREY, "1 3")
        y -= 22
    page.box(42, 150, 511, 170, fill=PALE, stroke=None)
    page.text(58, 296, "How the bracket is used", 11, "F2")
    y = 276
    for line in ("The bracket carries the pivot of the wind vane. It is bolted to the head of the mast with four",
                 "M6 bolts; the bore takes the bearing HP-18 with a light press fit. The rib below the bore keeps",
                 "the vane from nodding in gusts. Face A must be square to the bore within five hundredths of",
                 "a millimetre over the length of the base, or the vane will favour one side.",
                 "", "This company, its products and its customers are made up for this sample."):
        page.text(58, y, line, 9.5)
        y -= 17
    return page


def drawing():
    page = Page(SHEET)
    width, height = page.size
    page.box(14, 14, width - 28, height - 28, width=1.6)
    page.box(20, 20, width - 40, height - 40, width=0.5)

    # Front view: base plate, upright with a round head, bore, rib.
    cx, base, head = 165.0, 118.0, 270.0
    page.box(75, base, 180, 24, fill=PALE, width=1.6)
    side = [(cx - 46, base + 24), (cx - 38, head)]
    arc = [(cx + 38 * math.cos(math.pi - a * math.pi / 32), head + 38 * math.sin(math.pi - a * math.pi / 32)) for a in range(33)]
    page.path(side + arc + [(cx + 46, base + 24)], fill="0.97 0.98 0.99", width=1.6)
    page.circle(cx, head, 20, fill="1 1 1", width=1.6)
    page.circle(cx, head, 25, width=0.7, color=GREY)
    page.path([(cx - 7, base + 24), (cx - 7, head - 46), (cx + 7, head - 46), (cx + 7, base + 24)], fill=PALE, width=1.0)
    for x in (95, 235):
        page.line(x - 6, base, x - 6, base + 24, 0.7, GREY, "4 2")
        page.line(x + 6, base, x + 6, base + 24, 0.7, GREY, "4 2")
        page.line(x, base - 8, x, base + 32, 0.5, RED, "10 2.5 2 2.5")
    page.centre_lines(cx, head, 48)
    page.dimension_across(75, 255, 88, "180", base)
    page.dimension_across(95, 235, 102, "140", base)
    page.dimension_up(base, head, 52, "152", 75)
    page.dimension_up(base, base + 24, 276, "24", 255)
    page.line(cx + 14.2, head + 14.2, cx + 66, head + 66, 0.6, BLUE)
    page.arrow(cx + 14.2, head + 14.2, math.pi * 1.25)
    page.line(cx + 66, head + 66, cx + 112, head + 66, 0.6, BLUE)
    page.text(cx + 68, head + 69, "bore 40 H7", 7.5, color=BLUE)
    page.line(cx - 27, head + 27, cx - 60, head + 60, 0.6, BLUE)
    page.arrow(cx - 27, head + 27, -math.pi / 4)
    page.line(cx - 60, head + 60, cx - 84, head + 60, 0.6, BLUE)
    page.text(cx - 82, head + 63, "R 38", 7.5, color=BLUE)
    page.text(cx, 60, "FRONT", 8, "F2", GREY, align="centre")

    # Section through the bore, beside it.
    sx = 370.0
    page.box(sx - 48, base, 96, 24, width=1.6)
    page.hatch(sx - 48, base, 96, 24)
    page.box(sx - 20, base + 24, 40, head - 20 - base - 24, width=1.6)
    page.hatch(sx - 20, base + 24, 40, head - 20 - base - 24)
    page.box(sx - 20, head + 20, 40, 18, width=1.6)
    page.hatch(sx - 20, head + 20, 40, 18)
    page.box(sx - 20, head - 20, 40, 40, width=1.2)
    page.path([(sx + 20, base + 24), (sx + 44, base + 24), (sx + 20, head - 46)], fill=PALE, width=1.2)
    page.line(sx - 34, head, sx + 34, head, 0.5, RED, "10 2.5 2 2.5")
    page.line(sx, base - 10, sx, head + 52, 0.5, RED, "10 2.5 2 2.5")
    page.dimension_across(sx - 20, sx + 20, head + 58, "40", head + 38)
    page.dimension_across(sx - 48, sx + 48, 88, "96", base)
    page.dimension_up(head - 20, head + 20, sx - 58, "40 H7", sx - 20)
    page.text(sx, 60, "SECTION A - A", 8, "F2", GREY, align="centre")
    page.line(cx, head + 56, cx, head + 74, 1.2)
    page.text(cx - 4, head + 78, "A", 9, "F2", align="right")

    # Plan of the base with its four holes, and notes.
    px, py = 508.0, 296.0
    page.box(px - 58, py - 34, 116, 68, fill=PALE, width=1.2)
    for dx in (-45, 45):
        for dy in (-22, 22):
            page.circle(px + dx, py + dy, 4, fill="1 1 1", width=1.0)
            page.centre_lines(px + dx, py + dy, 8)
    page.box(px - 30, py - 13, 60, 26, width=1.0)
    page.text(px, py - 50, "PLAN (1:2)", 8, "F2", GREY, align="centre")
    page.text(px - 58, 228, "NOTES", 8, "F2")
    for i, line in enumerate(("1  All fillets R 4", "2  Four holes 6.6", "3  Face A square to bore", "4  Break sharp edges")):
        page.text(px - 58, 215 - 11 * i, line, 7.5)

    # Title block.
    bx, by = 436.0, 20.0
    page.box(bx, by, width - 20 - bx, 132, fill="1 1 1", width=1.2)
    for y in (44, 68, 92, 116):
        page.line(bx, y, width - 20, y, 0.6)
    page.text(bx + 8, 134, "Harrow & Pike", 11, "F2", BLUE)
    page.text(bx + 8, 122, "Instruments", 8, color=GREY)
    for y, label, value in ((96, "TITLE", "Pivot bracket"), (72, "NUMBER", "2291-B / 2"), (48, "SCALE", "1 : 1"), (24, "DRAWN", "E. Pike")):
        page.text(bx + 8, y + 12, label, 5.5, color=GREY)
        page.text(bx + 8, y + 2.5, value, 9, "F2")
    page.text(width - 28, 26.5, "2 of 5", 9, align="right")
    return page


def parts():
    page = Page(A4)
    header(page, "Parts list", 3)
    page.text(42, 720, "Parts for one bracket", 20, "F2")
    y = rows(page, 680, ((50, "left"), (90, "left"), (330, "left"), (480, "right"), (545, "right")), (
        ("Pos.", "Part", "Material", "Number", "Qty"),
        ("1", "Bracket, cast and bored", "Bronze CB-7", "2291-01", "1"),
        ("2", "Bearing HP-18", "Steel, sealed", "1804-18", "1"),
        ("3", "Bearing cap with gasket", "Bronze CB-7", "2291-03", "1"),
        ("4", "Bolt M6 x 30", "Stainless A4", "0600-30", "4"),
        ("5", "Washer 6.4", "Stainless A4", "0064-00", "8"),
        ("6", "Nut M6, locking", "Stainless A4", "0600-00", "4"),
        ("7", "Grease nipple", "Brass", "0110-02", "1"),
        ("8", "Vane spindle 40 x 210", "Stainless A4", "2291-08", "1"),
        ("9", "Name plate", "Enamelled", "2291-09", "1")))
    page.text(42, y - 24, "Positions 4 to 6 are packed together in bag B. Position 2 is fitted at the works.", 9.5)
    page.text(42, y - 64, "Weight by part (grams)", 13, "F2")
    y -= 96
    for label, grams in (("Bracket", 1840), ("Bearing", 310), ("Cap", 220), ("Spindle", 1460), ("Fixings", 164)):
        page.text(42, y, label, 9.5)
        page.box(110, y - 4, grams / 5.0, 14, fill=BLUE, stroke=None)
        page.text(118 + grams / 5.0, y, str(grams), 9.5, color=GREY)
        y -= 24
    return page


def invoice():
    page = Page(A4)
    header(page, "Invoice 2291", 4)
    page.text(42, 720, "Saltmarsh Harbour Office", 11, "F2")
    for i, line in enumerate(("Pier 4, Instrument Store", "Saltmarsh")):
        page.text(42, 705 - 14 * i, line, 10)
    for i, (label, value) in enumerate((("Invoice", "2291"), ("Order", "SHO-77/12"), ("Terms", "30 days"))):
        page.text(400, 720 - 15 * i, label, 10, "F2", GREY)
        page.text(553, 720 - 15 * i, value, 10, align="right")
    items = (("Pivot bracket 2291-B, complete", 12, 184.00), ("Spare bearing HP-18", 24, 21.50),
             ("Vane spindle 40 x 210", 12, 66.25), ("Bag B, fixings", 14, 4.80), ("Works inspection with record", 1, 150.00))
    total = sum(count * price for _, count, price in items)
    lines = [("Item", "Qty", "Each", "Amount")]
    lines += [(name, str(count), f"{price:,.2f}", f"{count * price:,.2f}") for name, count, price in items]
    y = rows(page, 640, ((50, "left"), (360, "right"), (450, "right"), (545, "right")), lines)
    for label, value, font in (("Sum", total, "F1"), ("Carriage", 85.0, "F1"), ("To pay", total + 85.0, "F2")):
        page.text(450, y - 14, label, 10.5, font, align="right")
        page.text(545, y - 14, f"{value:,.2f}", 10.5, font, align="right")
        y -= 18
    page.line(380, y + 16, 553, y + 16, 0.8, BLUE)
    page.text(42, y - 40, "Amounts in crowns. Please quote the invoice number with your payment.", 9.5)
    page.text(42, y - 56, "Brackets stay the property of Harrow & Pike until they are paid for.", 9.5)
    return page


def inspection():
    page = Page(A4)
    header(page, "Inspection", 5)
    page.text(42, 720, "Inspection record", 20, "F2")
    y = rows(page, 680, ((50, "left"), (250, "left"), (400, "right"), (545, "right")), (
        ("Feature", "Wanted", "Measured", "Verdict"),
        ("Bore", "40.000 to 40.025", "40.012", "good"),
        ("Height of the bore", "152 within 0.1", "152.04", "good"),
        ("Face A to bore", "square within 0.05", "0.03", "good"),
        ("Holes in the base", "140 within 0.2", "139.93", "good"),
        ("Weight of the casting", "1840 within 40", "1852", "good")))
    page.text(42, y - 30, "References", 15, "F2")
    y -= 56
    for text, target in (("The drawing of this set", 2), ("Care of bearings (a document beside this one)", "care.pdf"),
                         ("This set again, opened at the parts list", "bracket.pdf#page=3"),
                         ("The makers' own page", "http://www.harrow-pike.example/masts")):
        page.link(42, y, text, target, 11)
        y -= 24
    page.text(42, y - 20, "A click opens the reference in this window, a click with Control held in a new one.", 9.5, color=GREY)
    return page


def care():
    page = Page(A4)
    header(page, "Care of bearings")
    page.text(42, 720, "Care of bearings HP-18", 20, "F2")
    y = 684
    for line in ("1  Grease every spring, two strokes of the gun, until clean grease shows at the cap.",
                 "2  Turn the vane by hand afterwards. It must come to rest without a jerk.",
                 "3  After a storm with salt spray, rinse the cap with fresh water and dry it.",
                 "4  Replace the bearing when the vane can be lifted by more than half a millimetre."):
        page.text(42, y, line, 11)
        y -= 22
    page.link(42, y - 14, "Back to the drawing set", "./bracket.pdf", 11)
    return page


def write(pages, path, title):
    objects = ["<< /Type /Catalog /Pages 2 0 R >>", "", "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>",
               "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica-Bold /Encoding /WinAnsiEncoding >>",
               f"<< /Title ({title}) /Author (Harrow & Pike Instruments) >>"]
    page_number = lambda i: len(objects) + 1 + 2 * i  # noqa: E731  every page is followed by its content
    numbers = [page_number(i) for i in range(len(pages))]
    objects[1] = f"<< /Type /Pages /Kids [{' '.join(f'{n} 0 R' for n in numbers)}] /Count {len(pages)} >>"
    for page, number in zip(pages, numbers):
        annotations = []
        for (x1, y1, x2, y2), target in page.links:
            action = (f"/Dest [{numbers[target - 1]} 0 R /XYZ null null null]" if isinstance(target, int)
                      else f"/A << /S /URI /URI ({target}) >>")
            annotations.append(f"<< /Type /Annot /Subtype /Link /Rect [{x1:.1f} {y1:.1f} {x2:.1f} {y2:.1f}] /Border [0 0 0] {action} >>")
        objects.append(f"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 {page.size[0]:g} {page.size[1]:g}] "
                       f"/Resources << /Font << /F1 3 0 R /F2 4 0 R >> >> /Contents {number + 1} 0 R"
                       + (f" /Annots [{' '.join(annotations)}]" if annotations else "") + " >>")
        content = "\n".join(page.operators)
        objects.append(f"<< /Length {len(content) + 1} >>\nstream\n{content}\n\nendstream")
    data = b"%PDF-1.4\n%\xe2\xe3\xcf\xd3\n"
    offsets = []
    for i, body in enumerate(objects, 1):
        offsets.append(len(data))
        data += f"{i} 0 obj\n{body}\nendobj\n".encode("latin-1")
    start = len(data)
    data += f"xref\n0 {len(objects) + 1}\n0000000000 65535 f \n".encode()
    data += b"".join(f"{offset:010d} 00000 n \n".encode() for offset in offsets)
    data += f"trailer\n<< /Size {len(objects) + 1} /Root 1 0 R /Info 5 0 R >>\nstartxref\n{start}\n%%EOF\n".encode()
    path.write_bytes(data)


if __name__ == "__main__":
    here = pathlib.Path(__file__)
    write([cover(), drawing(), parts(), invoice(), inspection()], here.with_name("bracket.pdf"), "Drawing set 2291-B")
    write([care()], here.with_name("care.pdf"), "Care of bearings")
