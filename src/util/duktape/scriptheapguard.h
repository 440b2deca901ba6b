// The limits of one Duktape heap: the time a script may run before the engine
// stops it, and the memory the heap may hold. The guard is the heap's user
// data: the allocation functions below are the heap's allocator and
// script_heap_guard_timed_out() is the engine's execution timeout check.
#ifndef SCRIPTHEAPGUARD_H
#define SCRIPTHEAPGUARD_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ScriptHeapGuard
{
    // CLOCK_MONOTONIC in nanoseconds; 0 while no script runs.
    long long deadline;
    // Set when the check has fired; stays set until the next run is armed, so
    // a script that catches the timeout error is stopped again at once.
    int timedOut;
    // Bytes the heap may hold; 0 for no limit.
    size_t memoryLimit;
    size_t memoryUsed;
    // Set when an allocation was refused; cleared when the next run is armed.
    int memoryExceeded;
} ScriptHeapGuard;

// Starts the clock of a run that may last that long (0: no time limit).
void script_heap_guard_arm(ScriptHeapGuard* guard, long long milliseconds);
// Ends the run; the flags stay until the next run is armed.
void script_heap_guard_disarm(ScriptHeapGuard* guard);

int script_heap_guard_timed_out(void* udata);

void* script_heap_guard_alloc(void* udata, size_t size);
void* script_heap_guard_realloc(void* udata, void* ptr, size_t size);
void script_heap_guard_free(void* udata, void* ptr);

#ifdef __cplusplus
}
#endif

#endif // SCRIPTHEAPGUARD_H
