#include "maintenance/Authenticode.h"

#include <qt_windows.h>

#include <softpub.h>
#include <wincrypt.h>
#include <wintrust.h>

#include <string>

namespace {
QString signerName(HANDLE stateData)
{
    CRYPT_PROVIDER_DATA *provider = WTHelperProvDataFromStateData(stateData);
    CRYPT_PROVIDER_SGNR *signer = provider ? WTHelperGetProvSignerFromChain(provider, 0, FALSE, 0) : nullptr;
    if (!signer || signer->csCertChain == 0 || !signer->pasCertChain || !signer->pasCertChain[0].pCert)
        return {};
    PCCERT_CONTEXT cert = signer->pasCertChain[0].pCert;
    wchar_t name[256] = {};
    const DWORD length = CertGetNameStringW(cert, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name, 256);
    return length > 1 ? QString::fromWCharArray(name, int(length) - 1) : QString();
}
} // namespace

AuthenticodeResult checkAuthenticode(const QString &path)
{
    const std::wstring file = path.toStdWString();
    WINTRUST_FILE_INFO fileInfo = {};
    fileInfo.cbStruct = sizeof(fileInfo);
    fileInfo.pcwszFilePath = file.c_str();

    WINTRUST_DATA data = {};
    data.cbStruct = sizeof(data);
    data.dwUIChoice = WTD_UI_NONE;
    // No network: the check must not hang on a revocation server, and it never freezes the
    // window for long.
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwProvFlags = WTD_CACHE_ONLY_URL_RETRIEVAL;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &fileInfo;
    data.dwStateAction = WTD_STATEACTION_VERIFY;

    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    const LONG code = WinVerifyTrust(static_cast<HWND>(INVALID_HANDLE_VALUE), &action, &data);

    AuthenticodeResult result;
    result.code = code;
    if (data.hWVTStateData)
        result.signer = signerName(data.hWVTStateData);
    switch (static_cast<unsigned long>(code)) {
    case ERROR_SUCCESS:
        result.status = AuthenticodeResult::Valid;
        break;
    case static_cast<unsigned long>(TRUST_E_NOSIGNATURE):
    case static_cast<unsigned long>(TRUST_E_SUBJECT_FORM_UNKNOWN):
    case static_cast<unsigned long>(TRUST_E_PROVIDER_UNKNOWN):
        result.status = AuthenticodeResult::Unsigned;
        break;
    case static_cast<unsigned long>(TRUST_E_BAD_DIGEST):
    case static_cast<unsigned long>(TRUST_E_NO_SIGNER_CERT):
    case static_cast<unsigned long>(CRYPT_E_SECURITY_SETTINGS):
        result.status = AuthenticodeResult::Broken;
        break;
    default:
        result.status = AuthenticodeResult::Untrusted;
        break;
    }
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    WinVerifyTrust(static_cast<HWND>(INVALID_HANDLE_VALUE), &action, &data);
    return result;
}
