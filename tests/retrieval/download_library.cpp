// A library with the download worker in it, as the module has it: for loading and unloading.
#include "retrieval/download/download.h"

extern "C" __declspec(dllexport) void download_for(HWND window)
{
    quill::DownloadPDFFile({window, nullptr, nullptr});
}
