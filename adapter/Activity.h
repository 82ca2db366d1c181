// What an adapter counts and logs.
#pragma once

#include "Exported.h"

#include <vector>

// An address that the adapter has talked to.
struct Neighbour {
    ARPTABLE entry;    // time_in is filled in when the table is read
    SD_UINT32 seconds; // when it was last heard of
};

struct Activity {
    HBAPORTSTATISCSI statistics{};
    HBAPORTSTATISCSI baseline{};       // what the port had counted by itself at the last reset of the counters
    std::vector<CONNERRTABLE> errors;  // oldest first, at most LOG_CAPACITY
    std::vector<Neighbour> neighbours; // longest silent first, at most LOG_CAPACITY
};

// Adds counters field by field; each goes on from 0 after its last number, as counters do.
void add(HBAPORTSTATISCSI &counters, const HBAPORTSTATISCSI &more);
void subtract(HBAPORTSTATISCSI &counters, const HBAPORTSTATISCSI &less);
// Lowers a baseline to 0 in each field that counts less by now: that counter has begun anew since. Whether any has.
bool renewBaseline(HBAPORTSTATISCSI &baseline, const HBAPORTSTATISCSI &counted);

// Adds an entry as the newest of the log. An error that is in the log already is counted there.
void addError(Activity &activity, const CONNERRTABLE &entry);
// Puts a host at the end of the ARP table.
void addNeighbour(Activity &activity, const Neighbour &neighbour);
