# Around commands that take picture files: a Group 4 TIFF file, a PNG file and a JPEG file.
gm convert -size 200x100 xc:white -monochrome -compress Group4 page1.tif
gm convert -size 100x50 xc:red page2.png
gm convert -size 100x50 xc:blue photo.jpg
# BLOCK
