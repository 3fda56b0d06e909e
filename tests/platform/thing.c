/* A library to load: says which of the test's libraries it is. */
__attribute__((visibility("default"))) int ThingNumber(void);

int ThingNumber(void) { return THING_NUMBER; }
