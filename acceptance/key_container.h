// The container of the private key of the kit's TLS server. A run that was broken off may leave it.
#pragma once

#include <windows.h>

#include <wincrypt.h>

namespace quill::acceptance {

inline constexpr wchar_t key_container[] = L"QuillPDF.IE acceptance";
inline constexpr const wchar_t* key_provider = MS_ENH_RSA_AES_PROV_W;

// Also where there is none.
inline void delete_key_container()
{
    HCRYPTPROV none = 0;
    CryptAcquireContextW(&none, key_container, key_provider, PROV_RSA_AES, CRYPT_DELETEKEYSET | CRYPT_SILENT);
}

} // namespace quill::acceptance
