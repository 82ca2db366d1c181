// Files with late dates, for SQLite in 32 bit.
#pragma once

// Debian's 32-bit SQLite asks the system for 32-bit dates and so refuses a file dated after 2038. From here on it is
// told the last date that it can take instead. May be called again, and from many threads. Where SQLite takes all
// dates nothing happens. It holds for the process: the library has to stay loaded.
void acceptLateDates();
