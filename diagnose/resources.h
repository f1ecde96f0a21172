// Identifiers of the program's resources: the module's registration scripts.
#pragma once

#define QUILL_DOCUMENT_SCRIPT 100
#define QUILL_HELPER_SCRIPT 102
