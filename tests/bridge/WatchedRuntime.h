// What the code under test prints when no watch is there to take it.
#pragma once

// Drops it, on all threads.
void quietRuntime(bool quiet);
