#include "duktapemoduleloader.h"

#include <QString>
#include <QStringList>

namespace {
const char* const moduleIdKey = DUK_HIDDEN_SYMBOL("moduleId");
} // namespace

void DuktapeModuleLoader::init(duk_context* context)
{
    duk_push_global_object(context);
    duk_push_c_function(context, require, 1);
    duk_push_string(context, "name");
    duk_push_string(context, "require");
    duk_def_prop(context, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
    duk_put_prop_string(context, -2, "require");
    duk_get_prop_string(context, -1, "Duktape");
    duk_push_bare_object(context);
    duk_put_prop_string(context, -2, "modLoaded");
    duk_pop_2(context);
}

// Kept apart from require() so that every C++ object is gone before Duktape
// may unwind the calling frame.
bool DuktapeModuleLoader::pushResolvedId(
    duk_context* context, const char* requested, const char* parent)
{
    const QString id = QString::fromUtf8(requested);
    QStringList terms;
    if (id.startsWith(QLatin1Char('.')) && parent && *parent) {
        terms = QString::fromUtf8(parent).split(QLatin1Char('/'));
        terms.removeLast();
    }
    const QStringList requestedTerms = id.split(QLatin1Char('/'));
    for (const QString& term : requestedTerms) {
        if (term.isEmpty())
            return false;
        if (term == QLatin1String("."))
            continue;
        if (term == QLatin1String("..")) {
            if (terms.isEmpty())
                return false;
            terms.removeLast();
            continue;
        }
        terms.append(term);
    }
    if (terms.isEmpty())
        return false;
    duk_push_string(context, terms.join(QLatin1Char('/')).toUtf8().constData());
    return true;
}

duk_ret_t DuktapeModuleLoader::require(duk_context* context)
{
    // [ id ]
    const char* requested = duk_require_string(context, 0);
    duk_push_current_function(context);
    duk_get_prop_string(context, -1, moduleIdKey);
    const char* parent = duk_get_string(context, -1);
    if (!pushResolvedId(context, requested, parent))
        return duk_error(context, DUK_ERR_TYPE_ERROR, "cannot resolve module id: %s", requested);
    // [ id func parentId resolved ]
    const duk_idx_t idIndex = duk_get_top_index(context);

    duk_get_global_string(context, "Duktape");
    const duk_idx_t duktapeIndex = duk_get_top_index(context);
    duk_get_prop_string(context, duktapeIndex, "modLoaded");
    const duk_idx_t loadedIndex = duk_get_top_index(context);
    duk_dup(context, idIndex);
    if (duk_get_prop(context, loadedIndex)) {
        duk_get_prop_string(context, -1, "exports");
        return 1;
    }
    duk_pop(context);

    // The module's own require resolves relative ids against the module id.
    duk_push_c_function(context, require, 1);
    duk_dup(context, idIndex);
    duk_put_prop_string(context, -2, moduleIdKey);
    duk_dup(context, idIndex);
    duk_put_prop_string(context, -2, "id");
    const duk_idx_t requireIndex = duk_get_top_index(context);
    duk_push_object(context);
    const duk_idx_t exportsIndex = duk_get_top_index(context);
    duk_push_object(context);
    const duk_idx_t moduleIndex = duk_get_top_index(context);
    duk_dup(context, exportsIndex);
    duk_put_prop_string(context, moduleIndex, "exports");
    duk_dup(context, idIndex);
    duk_put_prop_string(context, moduleIndex, "id");

    // Registered before it runs, so that circular requires see the partial exports.
    duk_dup(context, idIndex);
    duk_dup(context, moduleIndex);
    duk_put_prop(context, loadedIndex);

    duk_get_prop_string(context, duktapeIndex, "modSearch");
    duk_dup(context, idIndex);
    duk_dup(context, requireIndex);
    duk_dup(context, exportsIndex);
    duk_dup(context, moduleIndex);
    if (duk_pcall(context, 4) != DUK_EXEC_SUCCESS)
        goto failed;
    // [ ... source ]
    if (duk_is_string(context, -1)) {
        duk_push_string(context, "(function (require, exports, module) {");
        duk_swap_top(context, -2);
        duk_push_string(context, "\n})");
        duk_concat(context, 3);
        duk_get_prop_string(context, moduleIndex, "filename");
        if (!duk_is_string(context, -1)) {
            duk_pop(context);
            duk_dup(context, idIndex);
        }
        if (duk_pcompile(context, DUK_COMPILE_EVAL) != 0)
            goto failed;
        if (duk_pcall(context, 0) != DUK_EXEC_SUCCESS)
            goto failed;
        // [ ... wrapper ]
        duk_dup(context, exportsIndex);
        duk_dup(context, requireIndex);
        duk_dup(context, exportsIndex);
        duk_dup(context, moduleIndex);
        if (duk_pcall_method(context, 3) != DUK_EXEC_SUCCESS)
            goto failed;
    }
    duk_pop(context);
    duk_get_prop_string(context, moduleIndex, "exports");
    return 1;

failed:
    // A module that failed to load is forgotten, so that it can be retried.
    duk_dup(context, idIndex);
    duk_del_prop(context, loadedIndex);
    return duk_throw(context);
}
