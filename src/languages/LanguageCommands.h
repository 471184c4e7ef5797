#pragma once
// The language form's jobs for scripts:
//     create-language --database DB --language NAME [--languages FILE]
//     delete-language --database DB --language NAME [--with-configuration] [--languages FILE]
// The language-definition database is --languages, else the settings file's
// Setup/StandardLangLookupDB. Running the command is the user's answer to the
// form's question (repair an existing language, confirm the deletion).

#include "common/ConsoleCommand.h"

#include <vector>

namespace ht
{

std::vector<ConsoleCommand> languageCommands();

} // namespace ht
