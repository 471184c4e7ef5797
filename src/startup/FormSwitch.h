#pragma once
// The main forms of the program - the editor, the importer and the language
// form - and the exchange of one for another.

namespace ht
{

struct Context;

enum class FormId { Edit, Import, Languages };

// What the program's windows offer to the core: the Qt forms implement it,
// tests use a headless one. Set as Context::forms.
class FormHost
{
  public:
    virtual ~FormHost() = default;
    virtual void showForm(FormId form) = 0;   // modeless; an open one comes to the front
    virtual void unloadForm(FormId form) = 0; // hidden and unloaded
    // False for a form this version of the program does not have yet.
    virtual bool available(FormId form) const = 0;
};

// Replaces the form `leave` by the form `show`. While help pages are being
// written the user is asked first (Abort_WriteHTML) and nothing happens
// unless the run is to be aborted. False when nothing was switched.
bool SwitchForm(Context &ctx, FormId leave, FormId show);

} // namespace ht
