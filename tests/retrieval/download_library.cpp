// A library with the download worker, linked as in the module, to load and unload.
#include "retrieval/download/download.h"

extern "C" __declspec(dllexport) void download_for(HWND window)
{
    quill::DownloadPDFFile({window, nullptr, nullptr});
}
