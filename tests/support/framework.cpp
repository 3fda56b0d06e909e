// Holds the precompiled header of the test framework.
