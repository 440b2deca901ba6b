// Duktape's configuration for this program: Debian's generated configuration
// with the execution timeout check switched on. Debian builds its library
// without the check, so a script in an endless loop could never be stopped;
// the check calls back into the heap's guard (scriptheapguard.h), which says
// when the running script has used up its time.
#ifndef VEKLARI_DUK_CONFIG_H
#define VEKLARI_DUK_CONFIG_H

#include "duk_config_debian.h"

#ifdef __cplusplus
extern "C" {
#endif
int script_heap_guard_timed_out(void* udata);
#ifdef __cplusplus
}
#endif

// The interrupt counter runs the check every few hundred thousand bytecode
// instructions; the heap's user data is the engine's ScriptHeapGuard.
#define DUK_USE_INTERRUPT_COUNTER
#undef DUK_USE_EXEC_TIMEOUT_CHECK
#define DUK_USE_EXEC_TIMEOUT_CHECK(udata) script_heap_guard_timed_out(udata)

#endif // VEKLARI_DUK_CONFIG_H
