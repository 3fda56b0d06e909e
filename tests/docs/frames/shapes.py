# Around a block of Python: pixels to write, and the module.
import numpy
import sorrelin

page = numpy.ones((1400, 1000), bool)
page[100:200] = False
photo = numpy.zeros((300, 400, 3), numpy.uint8)
photo[:, :, 0] = 200
# BLOCK
