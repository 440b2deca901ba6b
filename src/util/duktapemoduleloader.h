#ifndef DUKTAPEMODULELOADER_H
#define DUKTAPEMODULELOADER_H

#include <duktape.h>

// CommonJS modules for scripts: a global require(id) that asks
// Duktape.modSearch(id, require, exports, module) for the module's source,
// runs it wrapped in function (require, exports, module) { ... } and keeps
// the module in Duktape.modLoaded, so a second require returns the same
// exports. Relative ids ("./x", "../x") resolve against the requiring module.
class DuktapeModuleLoader
{
public:
    // Defines require and Duktape.modLoaded in the heap's global object.
    static void init(duk_context* context);

private:
    static duk_ret_t require(duk_context* context);
    static bool pushResolvedId(duk_context* context, const char* requested, const char* parent);
};

#endif // DUKTAPEMODULELOADER_H
