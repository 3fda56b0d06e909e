// The two fixed parts of the export table that have no further role.
#include <sorrelin/frame/pdf.h>

int nCreatePDF = 0;

int fnCreatePDF(void) { return 42; }
