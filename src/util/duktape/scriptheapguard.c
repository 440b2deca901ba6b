#include "scriptheapguard.h"

#include <stdlib.h>
#include <time.h>

enum
{
    nanosecondsPerMillisecond = 1000000,
    nanosecondsPerSecond = 1000000000
};

// Every block carries its size in front, so that a reallocation or a free
// knows how much the heap gives back. The union keeps the data aligned.
typedef union BlockHeader {
    size_t size;
    max_align_t alignment;
} BlockHeader;

static long long monotonicNow(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (long long)now.tv_sec * nanosecondsPerSecond + now.tv_nsec;
}

void script_heap_guard_arm(ScriptHeapGuard* guard, long long milliseconds)
{
    guard->timedOut = 0;
    guard->memoryExceeded = 0;
    guard->deadline
        = milliseconds > 0 ? monotonicNow() + milliseconds * nanosecondsPerMillisecond : 0;
}

void script_heap_guard_disarm(ScriptHeapGuard* guard)
{
    guard->deadline = 0;
}

int script_heap_guard_timed_out(void* udata)
{
    ScriptHeapGuard* guard = (ScriptHeapGuard*)udata;
    if (!guard || guard->deadline == 0)
        return 0;
    if (!guard->timedOut && monotonicNow() >= guard->deadline)
        guard->timedOut = 1;
    return guard->timedOut;
}

// Whether the heap may grow by that many bytes; a refusal is remembered.
static int mayGrow(ScriptHeapGuard* guard, size_t growth)
{
    if (guard->memoryLimit == 0 || growth <= guard->memoryLimit - guard->memoryUsed)
        return 1;
    guard->memoryExceeded = 1;
    return 0;
}

void* script_heap_guard_alloc(void* udata, size_t size)
{
    ScriptHeapGuard* guard = (ScriptHeapGuard*)udata;
    if (size > (size_t)-1 - sizeof(BlockHeader) || !mayGrow(guard, size))
        return NULL;
    BlockHeader* block = (BlockHeader*)malloc(sizeof(BlockHeader) + size);
    if (!block)
        return NULL;
    block->size = size;
    guard->memoryUsed += size;
    return block + 1;
}

void script_heap_guard_free(void* udata, void* ptr)
{
    if (!ptr)
        return;
    ScriptHeapGuard* guard = (ScriptHeapGuard*)udata;
    BlockHeader* block = (BlockHeader*)ptr - 1;
    guard->memoryUsed -= block->size;
    free(block);
}

void* script_heap_guard_realloc(void* udata, void* ptr, size_t size)
{
    if (!ptr)
        return script_heap_guard_alloc(udata, size);
    if (size == 0) {
        script_heap_guard_free(udata, ptr);
        return NULL;
    }
    ScriptHeapGuard* guard = (ScriptHeapGuard*)udata;
    BlockHeader* block = (BlockHeader*)ptr - 1;
    const size_t oldSize = block->size;
    if (size > (size_t)-1 - sizeof(BlockHeader)
        || (size > oldSize && !mayGrow(guard, size - oldSize)))
        return NULL;
    BlockHeader* moved = (BlockHeader*)realloc(block, sizeof(BlockHeader) + size);
    if (!moved)
        return NULL;
    moved->size = size;
    guard->memoryUsed = guard->memoryUsed - oldSize + size;
    return moved + 1;
}
