/* The numbers of the interface: error codes and compression values. Valid C11 and C++. */
#ifndef SORRELIN_PLATFORM_CODES_H_
#define SORRELIN_PLATFORM_CODES_H_

/* Error codes. pdf_GetLastPDFErrorText gives the text of each. */
enum {
  PDF_ERROR_NONE = 0,           /* success */
  PDF_ERROR_SYSTEM = 1,         /* the text is the system's, for its last error on this thread */
  PDF_ERROR_INVALID_HANDLE = 2, /* no session, no bitmap, or nothing is open */
  PDF_ERROR_FILE_EXISTS = 3,    /* set by nothing */
  PDF_ERROR_INVALID_IMAGE_SIZE = 4,     /* a width or height of 0, or an unreadable bitmap */
  PDF_ERROR_INVALID_BITS_PER_PIXEL = 5, /* the depth is not 1, 8 or 24, or has not this coding */
  PDF_ERROR_INVALID_STRING = 6,         /* set by nothing */
  PDF_ERROR_NULL_POINTER = 7,           /* a null text, buffer or size */
  PDF_ERROR_ZERO_BYTES = 8,             /* nothing to write */
  PDF_ERROR_INVALID_DPI = 9,            /* the resolution cannot be read */
  PDF_ERROR_MEMORY = 10,                /* memory is short, or a picture passes 4 GiB */
  PDF_ERROR_OBJECT_EXISTS = 11,         /* finished already */
  PDF_ERROR_TOO_MANY_PAGES = 12,        /* more than 30,000; no text */
  PDF_ERROR_RESOURCE_TYPE = 13,         /* class only; no text */
  PDF_ERROR_EMPTY_STREAM = 14,          /* an image without data; no text */
  PDF_ERROR_COMPRESSION = 15,           /* depth and coding do not go together */
  PDF_ERROR_NEGATIVE_VALUE = 16,        /* a negative width or height */
  PDF_ERROR_TEMP_DIRECTORY = 17,        /* there is no folder for temporary files */
  PDF_ERROR_TEMP_FILE = 18,             /* a temporary file cannot be made, written or read */
  PDF_ERROR_CCITT_LIBRARY = 19,     /* the Group 4 library is missing, or an entry point of it */
  PDF_ERROR_ENCODING = 20,          /* the codec library failed */
  PDF_ERROR_JPEG_LIBRARY = 21,      /* the JPEG library is missing, or an entry point of it */
  PDF_ERROR_INVALID_PARAMETER = 22, /* no name or data to open */
  PDF_ERROR_OPEN = 23,              /* the file cannot be opened */
  PDF_ERROR_NOT_PDF = 24,           /* no document */
  PDF_ERROR_VERSION = 25,           /* not 1.0 to 1.8; to be updated: object streams */
  PDF_ERROR_READ = 26,              /* the pages root cannot be updated */
  PDF_ERROR_DECOMPRESSION = 27,     /* image data cannot be decoded */
  PDF_ERROR_PALETTE = 28,           /* a palette cannot be read */
  PDF_ERROR_UNSUPPORTED_COMPRESSION = 29, /* the image has no coding that is read */
  PDF_ERROR_CCITT_CODING = 30,            /* Group 4 data cannot be decoded */
  PDF_ERROR_PAGE_NUMBER = 31,             /* at or past the number of pages */
  PDF_ERROR_NOT_INITIALIZED = 32,         /* a session on which nothing has happened */
  PDF_ERROR_PROC_SET = 33,                /* class only */
  PDF_ERROR_OBJECT_TYPE = 34,             /* class only */
  PDF_ERROR_INSUFFICIENT_BUFFER = 35,     /* the size that is needed has been stored */
  PDF_ERROR_LUMBREL_LIBRARY = 36,         /* set by nothing */
  PDF_ERROR_PASSWORD_PROTECTED = 37,      /* set by nothing */
  PDF_ERROR_PAGE_WIDTH = 38,              /* set by nothing */
  PDF_ERROR_PELLORY_LIBRARY = 39,         /* set by nothing */
  PDF_ERROR_NEW_PAGE_OBJECT = 40,         /* the document has no room for another object */
  PDF_ERROR_INSERT_IMAGE = 41,            /* set by nothing */
  PDF_ERROR_FILE_NOT_FOUND = 42,          /* set by nothing */
  PDF_ERROR_ACCESS_DENIED = 43,           /* set by nothing */
  PDF_ERROR_INVALID_PASSWORD = 44,        /* set by nothing */
  PDF_ERROR_OCR_LIBRARY = 45,             /* OCR layer, not exported */
  PDF_ERROR_OCR_FUNCTIONS = 46,           /* OCR layer, not exported */
  PDF_ERROR_OCR = 47,                     /* OCR layer, not exported */
  PDF_ERROR_HOCR = 48                     /* OCR layer, not exported */
};

/* Compression of a page's image: either a small identifier or its flag, which mean the same. */
enum {
  PDF_COMPRESSION_NONE = 0,                /* raw */
  PDF_COMPRESSION_ASCII_HEX = 1,           /* named, not supported */
  PDF_COMPRESSION_ASCII_85 = 2,            /* named, not supported */
  PDF_COMPRESSION_LZW = 3,                 /* named, not supported */
  PDF_COMPRESSION_FLATE = 4,               /* 1, 8 and 24 bits */
  PDF_COMPRESSION_RUN_LENGTH = 5,          /* 8 bits */
  PDF_COMPRESSION_CCITT = 6,               /* Group 4: 1 bit */
  PDF_COMPRESSION_JPEG = 7,                /* 8 and 24 bits */
  PDF_COMPRESSION_FLAG_NOT_SPECIFIED = 16, /* refused */
  PDF_COMPRESSION_FLAG_NONE = 32,          /* the same, as a flag */
  PDF_COMPRESSION_FLAG_ASCII_HEX = 64,     /* the same, as a flag */
  PDF_COMPRESSION_FLAG_ASCII_85 = 128,     /* the same, as a flag */
  PDF_COMPRESSION_FLAG_LZW = 256,          /* the same, as a flag */
  PDF_COMPRESSION_FLAG_FLATE = 512,        /* the same, as a flag */
  PDF_COMPRESSION_FLAG_RUN_LENGTH = 1024,  /* the same, as a flag */
  PDF_COMPRESSION_FLAG_CCITT = 2048,       /* the same, as a flag */
  PDF_COMPRESSION_FLAG_JPEG = 4096         /* the same, as a flag */
};

#endif /* SORRELIN_PLATFORM_CODES_H_ */
