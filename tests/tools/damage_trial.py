"""Damaged pictures of every format: damage_trial.py PROGRAM [COPIES [SEED]].

Flips eight bytes in the coded data of COPIES (20) copies of each picture. Whatever the format's own
programs call damaged or warn of must be named by `PROGRAM make`, with exit status 1, and must not
be a page; with --keep-damaged it must be named too. Prints a line for each format; fails if a
damaged copy passed.
"""
import json
import os
import random
import re
import struct
import subprocess
import sys
import tempfile

PROGRAM = os.path.abspath(sys.argv[1])
COPIES = int(sys.argv[2]) if len(sys.argv) > 2 else 20
SEED = int(sys.argv[3]) if len(sys.argv) > 3 else 1
FLIPS = 8
WIDTH, HEIGHT = 200, 150

TIFF = (["tiffinfo", "-D", "FILE"], ["tiff2rgba", "FILE", "scrap.tif"],
        ["tiffcp", "-c", "none", "FILE", "scrap.tif"])
FAX = (["tiffinfo", "-D", "FILE"], ["tiffcp", "-c", "none", "FILE", "scrap.tif"])
JPEG = (["djpeg", "-outfile", "scrap.ppm", "FILE"],)
PNG = (["pngtopnm", "FILE"], ["pngfix", "FILE"])
GIF = (["giftopnm", "FILE"], ["giftext", "FILE"])
WEBP = (["dwebp", "-quiet", "FILE", "-o", "scrap.png"], ["webpinfo", "-quiet", "FILE"])
BMP = (["bmptopnm", "-quiet", "FILE"],)
JP2 = (["opj_decompress", "-i", "FILE", "-o", "scrap.ppm"],)
PLAIN = (["pamdepth", "-quiet", "255", "FILE"],)
HEIF = (["heif-convert", "-q", "90", "FILE", "scrap.png"],)


def tiff(options):
    return f"tiffcp {options} colour.tif FILE"


def fax(options):
    return f"tiffcp {options} bilevel.tif FILE"


def png(options, source):
    return f"pnmtopng {options} {source} >FILE"


# How each picture is made, and the programs that judge it.
PICTURES = {
    "none.tif": (tiff("-c none"), TIFF),
    "packbits.tif": (tiff("-c packbits"), TIFF),
    "lzw.tif": (tiff("-c lzw"), TIFF),
    "lzw-predicted.tif": (tiff("-c lzw:2"), TIFF),
    "lzw-planes.tif": (tiff("-c lzw -p separate"), TIFF),
    "deflate.tif": (tiff("-c zip"), TIFF),
    "deflate-strips.tif": (tiff("-c zip:2 -r 16"), TIFF),
    "deflate-tiles.tif": (tiff("-c zip -t -w 64 -l 64"), TIFF),
    "zstd.tif": (tiff("-c zstd:2"), TIFF),
    "lzma.tif": (tiff("-c lzma"), TIFF),
    "jpeg.tif": (tiff("-c jpeg:75 -r 152"), TIFF),
    "jpeg-strips.tif": (tiff("-c jpeg:75 -r 32"), TIFF),
    "jpeg-tiles.tif": (tiff("-c jpeg:75 -t -w 64 -l 64"), TIFF[1:]),
    "fax3.tif": (fax("-c g3:1d"), FAX),
    "fax3-two.tif": (fax("-c g3:2d"), FAX),
    "fax3-filled.tif": (fax("-c g3:1d:fill -r 50"), FAX),
    "fax4.tif": (fax("-c g4 -r 150"), FAX),
    "fax4-strips.tif": (fax("-c g4 -r 20"), FAX),
    "fax4-tiles.tif": (fax("-c g4 -t -w 64 -l 64"), FAX),
    "bilevel-packbits.tif": (fax("-c packbits -r 20"), FAX),
    "bilevel-lzw.tif": (fax("-c lzw -r 20"), FAX),
    "baseline.jpg": ("cjpeg -outfile FILE colour.ppm", JPEG),
    "grey.jpg": ("cjpeg -grayscale -outfile FILE colour.ppm", JPEG),
    "restarts.jpg": ("cjpeg -restart 1 -outfile FILE colour.ppm", JPEG),
    "optimal.jpg": ("cjpeg -optimize -sample 1x1 -outfile FILE colour.ppm", JPEG),
    "progressive.jpg": ("cjpeg -progressive -outfile FILE colour.ppm", JPEG),
    "arithmetic.jpg": ("cjpeg -arithmetic -outfile FILE colour.ppm", JPEG),
    "inks.jpg": ("gm convert colour.ppm -colorspace CMYK FILE", JPEG),
    "bilevel.png": (png("", "bilevel.pbm"), PNG),
    "grey2.png": (png("", "grey2.pgm"), PNG),
    "grey4.png": (png("", "grey4.pgm"), PNG),
    "grey8.png": (png("", "grey8.pgm"), PNG),
    "grey16.png": (png("", "grey16.pgm"), PNG),
    "palette.png": (png("", "palette.ppm"), PNG),
    "colour.png": (png("", "colour.ppm"), PNG),
    "deep.png": (png("", "deep.ppm"), PNG),
    "interlaced.png": (png("-interlace", "colour.ppm"), PNG),
    "alpha.png": (png("-alpha=grey8.pgm", "colour.ppm"), PNG),
    "flat.gif": ("ppmtogif palette.ppm >FILE", GIF),
    "interlaced.gif": ("ppmtogif -interlace palette.ppm >FILE", GIF),
    "lossy.webp": ("cwebp -quiet colour.ppm -o FILE", WEBP),
    "lossless.webp": ("cwebp -quiet -lossless colour.ppm -o FILE", WEBP),
    "runs.bmp": ("gm convert palette.ppm -type Palette -compress RLE BMP:FILE", BMP),
    "plain.bmp": ("ppmtobmp -bpp 24 colour.ppm >FILE", BMP),
    "lossless.jp2": ("opj_compress -i colour.ppm -o FILE", JP2),
    "lossy.jp2": ("opj_compress -r 20 -i colour.ppm -o FILE", JP2),
    "marked.j2k": ("opj_compress -SOP -EPH -i colour.ppm -o FILE", JP2),
    "plain.pbm": ("pnmtoplainpnm bilevel.pbm >FILE", PLAIN),
    "plain.pgm": ("pnmtoplainpnm grey8.pgm >FILE", PLAIN),
    "plain.ppm": ("pnmtoplainpnm colour.ppm >FILE", PLAIN),
}
HEIF_PICTURES = {
    "photo.heic": ("heif-enc -q 60 colour.png -o FILE", HEIF),
    "photo.avif": ("heif-enc -A -q 60 colour.png -o FILE", HEIF),
}
SOURCES = """
pgmtopbm -threshold grey8.pgm >bilevel.pbm
pamdepth 3 grey8.pgm >grey2.pgm
pamdepth 15 grey8.pgm >grey4.pgm
pnmquant 32 colour.ppm >palette.ppm
pnmtopng colour.ppm >colour.png
pamtotiff -none -truecolor colour.ppm >colour.tif
pamtotiff -none bilevel.pbm >bilevel.tif
"""


def run(command):
    return subprocess.run(command, capture_output=True, check=False)


def shell(command):
    done = run(["sh", "-ec", command])
    if done.returncode != 0:
        sys.exit(f"cannot make a picture: {command}\n{done.stderr.decode()}")


def write_sources():
    """Shapes, slopes and noise, so that each coding has something of each to code."""
    noise = random.Random(5)

    def tone(x, y, s):
        shape = 90 if (x // 9 + y // 7) % 3 == 0 else 0
        return (x * (s + 1) // 2 + y * 2 // 3 + shape + noise.randrange(6)) & 0xFF

    pixels = [[tone(x, y, s) for s in range(3)] for y in range(HEIGHT) for x in range(WIDTH)]
    size = f"{WIDTH} {HEIGHT}\n"

    def write(name, magic, maximum, data):
        with open(name, "wb") as file:
            file.write(f"{magic}\n{size}{maximum}\n".encode() + data)

    write("colour.ppm", "P6", 255, bytes(s for p in pixels for s in p))
    write("grey8.pgm", "P5", 255, bytes(p[0] for p in pixels))
    deep = [s * 256 + 7 for p in pixels for s in p]
    write("deep.ppm", "P6", 65535, struct.pack(f">{len(deep)}H", *deep))
    write("grey16.pgm", "P5", 65535, b"".join(struct.pack(">H", p[0] * 256 + 9) for p in pixels))
    shell(SOURCES)


def tiff_data(data):
    """The strips or tiles of the first directory."""
    order = "<" if data[:2] == b"II" else ">"
    at = struct.unpack_from(order + "I", data, 4)[0]
    fields = {}
    for i in range(struct.unpack_from(order + "H", data, at)[0]):
        entry = at + 2 + 12 * i
        tag, kind, count = struct.unpack_from(order + "HHI", data, entry)
        if tag not in (273, 279, 324, 325):
            continue
        form = "H" if kind == 3 else "I"
        inside = count * struct.calcsize(form) <= 4
        place = entry + 8 if inside else struct.unpack_from(order + "I", data, entry + 8)[0]
        fields[tag] = struct.unpack_from(f"{order}{count}{form}", data, place)
    offsets = fields.get(273) or fields[324]
    sizes = fields.get(279) or fields[325]
    return [i for offset, size in zip(offsets, sizes) for i in range(offset, offset + size)]


def after(mark):
    return lambda data: range(data.index(mark) + len(mark), len(data) - 2)


def png_data(data):
    return range(data.index(b"IDAT") + 4, data.index(b"IEND") - 8)


def gif_data(data):
    palette = 3 << (data[10] & 7) + 1
    return range(data.index(b",", 13 + palette) + 11, len(data) - 2)


def bmp_data(data):
    return range(struct.unpack_from("<I", data, 10)[0], len(data))


def webp_data(data):
    return range(30, len(data))


def plain_data(_):
    return range(20, 600)


DATA_OF = {".tif": tiff_data, ".jpg": after(b"\xff\xda"), ".png": png_data, ".gif": gif_data,
           ".webp": webp_data, ".bmp": bmp_data, ".jp2": after(b"\xff\x93"),
           ".j2k": after(b"\xff\x93"), ".pbm": plain_data, ".pgm": plain_data, ".ppm": plain_data,
           ".heic": after(b"mdat"), ".avif": after(b"mdat")}


def calls_damaged(judges, name):
    """Whether a judge fails on the file, or has a warning for it."""
    for judge in judges:
        done = run([name if word == "FILE" else word for word in judge])
        said = done.stderr.decode(errors="replace") + done.stdout[:100000].decode(errors="replace")
        words = re.search(r"\b(warning|error|invalid|corrupt|premature)", said, re.IGNORECASE)
        quiet = judge[0] in ("opj_decompress", "giftext", "pngfix", "heif-convert", "webpinfo")
        if done.returncode != 0 or words or (done.stderr and not quiet):
            return True
    return False


def named_by_program(names, options=()):
    """The files that the program names, and how many became pages."""
    if os.path.exists("out.pdf"):
        os.remove("out.pdf")
    done = run([PROGRAM, "make", "out.pdf", "--quiet", "--json", *options, *names])
    said = done.stderr.decode(errors="replace")
    named = {name for name in names if re.search(rf"^sorrelin: {re.escape(name)}\b", said, re.M)}
    if done.returncode != (1 if named else 0):
        sys.exit(f"exit status {done.returncode} with {len(named)} files named: {said}")
    return named, json.loads(done.stdout)["pages"]


def damaged_copies(name):
    whole = open(name, "rb").read()
    places = DATA_OF[os.path.splitext(name)[1]](whole)
    chance = random.Random(f"{SEED} {name}")
    names = []
    for copy in range(COPIES):
        data = bytearray(whole)
        for place in chance.sample(list(places), FLIPS):
            data[place] ^= chance.randrange(1, 256)
        names.append(f"copy{copy}-{name}")
        with open(names[-1], "wb") as file:
            file.write(data)
    return names


def try_picture(name, recipe, judges):
    """The copies that judges call damaged and the program does not."""
    shell(recipe.replace("FILE", name))
    copies = damaged_copies(name)
    damaged = {copy for copy in copies if calls_damaged(judges, copy)}
    named, pages = named_by_program([name, *copies])
    kept_named, _ = named_by_program(copies, ["--keep-damaged"])
    if name in named or calls_damaged(judges, name):
        sys.exit(f"{name} is called damaged as it is")
    if pages != 1 + COPIES - len(named):
        sys.exit(f"{name}: {pages} pages of {COPIES} copies with {len(named)} named")
    missed = damaged - (named & kept_named)
    print(f"{name}: {COPIES} copies, {len(damaged)} damaged, {len(named)} named"
          + (f", PASSED: {', '.join(sorted(missed))}" if missed else ""), flush=True)
    return missed


def reads_heif():
    shell("heif-enc -q 60 colour.png -o probe.heic")
    return not named_by_program(["probe.heic"])[0]


def main():
    missed = set()
    pictures = dict(PICTURES)
    write_sources()
    if reads_heif():
        pictures.update(HEIF_PICTURES)
    for name, (recipe, judges) in pictures.items():
        missed |= try_picture(name, recipe, judges)
    sys.exit(1 if missed else 0)


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    main()
