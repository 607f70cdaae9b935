#include "printschema/application_detection.h"

#include "printschema/print_schema_names.h"
#include "printschema/host_process.h"
#include "printschema/ticket_handler.h"
#include "util/result.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <iterator>
#include <optional>
#include <vector>

using namespace PrintSchema;

namespace {

constexpr DWORD kPathCapacity = MAX_PATH;
constexpr DWORD kAllAccess = 0x1FFFFF;
constexpr DWORD kQueryAndRead = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ;
constexpr size_t kMaxModules = 260;
constexpr wchar_t kUnknown[] = L"Unknown";

using PathBuffer = std::array<wchar_t, kPathCapacity>;

// How a known host process gives away the application it serves.
enum class Evidence {
    SpoolerClient,  // the print host of 32-bit applications: the spooler names the client process
    LoadedModule,   // a viewer DLL loaded into the host
    CommandLine,    // a viewer DLL named on the host's command line
    Nothing,        // the host hides the application
};

struct HostRule {
    const wchar_t* pathMarker;
    bool upperCasePath;  // the marker is matched against the upper-cased path
    Evidence evidence;
    const wchar_t* sign;  // module path part or command-line part that identifies the application
    const wchar_t* application;
};

// Tried in order; the first host whose marker the executable path contains decides.
constexpr HostRule kHostRules[] = {
    {L"\\splwow64.exe", false, Evidence::SpoolerClient, nullptr, nullptr},
    {L"\\DllHost.exe", false, Evidence::LoadedModule, L"\\PhotoViewer.dll", L"WindowsPhotoViewer"},
    {L"\\EXPLORER.EXE", true, Evidence::LoadedModule, L"\\Windows Photo Gallery\\PhotoViewer.dll",
     L"WindowsPhotoGallery"},
    {L"\\rundll32.exe", false, Evidence::CommandLine, L"\\shimgvw.dll", L"Microsoft Windows Fax and Scan"},
    {L"\\mstsc.exe", false, Evidence::Nothing, nullptr, nullptr},
    {L"\\PrintDialogHost.exe", false, Evidence::Nothing, nullptr, nullptr},
};

// File descriptions that are recorded under another name.
constexpr struct {
    const wchar_t* description;
    const wchar_t* application;
} kRenamedApplications[] = {
    {L"Print Server", L"WordPerfect"},
};

// The characters of XML names, colon excluded (a name's local part): those that may start a
// name, and those that may only follow. Characters beyond the 16-bit range (surrogate pairs) all
// may start a name.
struct CharacterRange {
    wchar_t first, last;
};
constexpr CharacterRange kNameStartCharacters[] = {
    {L'A', L'Z'},     {L'_', L'_'},     {L'a', L'z'},     {0x00C0, 0x00D6}, {0x00D8, 0x00F6},
    {0x00F8, 0x02FF}, {0x0370, 0x037D}, {0x037F, 0x1FFF}, {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD},
};
constexpr CharacterRange kNameFollowingCharacters[] = {
    {L'-', L'-'}, {L'.', L'.'}, {L'0', L'9'}, {0x00B7, 0x00B7}, {0x0300, 0x036F}, {0x203F, 0x2040},
};

template <size_t N>
bool InRanges(const CharacterRange (&ranges)[N], wchar_t c) {
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [c](const CharacterRange& range) { return c >= range.first && c <= range.last; });
}

bool IsHighSurrogate(wchar_t c) { return c >= 0xD800 && c <= 0xDB7F; }  // up to U+EFFFF
bool IsLowSurrogate(wchar_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

struct LanguageAndCodePage {
    WORD language;
    WORD codePage;
};

// A process handle closed through the inspection table.
class InspectedProcess {
public:
    explicit InspectedProcess(HANDLE handle) noexcept : m_handle(handle) {}
    InspectedProcess(const InspectedProcess&) = delete;
    InspectedProcess& operator=(const InspectedProcess&) = delete;
    ~InspectedProcess() {
        if (m_handle != nullptr) CurrentProcessInspection().closeHandle(m_handle);
    }
    HANDLE get() const noexcept { return m_handle; }

private:
    HANDLE m_handle;
};

void SetName(VStringBuffer& name, const wchar_t* text, size_t length) {
    name.Clear();
    name.Append(text, std::min(length, kMaxApplicationName));
}

// A path read into a fixed buffer, terminated whatever length the call reported; false when the
// call failed.
bool Terminated(PathBuffer& path, DWORD length) noexcept {
    path[std::min<size_t>(length, path.size() - 1)] = L'\0';
    return length != 0;
}

bool ReadOwnPath(PathBuffer& path) {
    return Terminated(path, CurrentProcessInspection().getModuleFileName(nullptr, path.data(), kPathCapacity));
}

bool ReadModulePath(HANDLE process, HMODULE module, PathBuffer& path) {
    const DWORD length = CurrentProcessInspection().getModuleFileNameEx(process, module, path.data(), kPathCapacity);
    return Terminated(path, length);
}

PathBuffer UpperCased(const PathBuffer& path) {
    PathBuffer upper = path;
    ::CharUpperBuffW(upper.data(), static_cast<DWORD>(std::wcslen(upper.data())));
    return upper;
}

// The last translation of the version resource that has a FileDescription gives the name.
void ReadFileDescription(const wchar_t* path, VStringBuffer& name) {
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(path, &ignored);
    if (size == 0) return;
    std::vector<BYTE> resource(size);
    if (!::GetFileVersionInfoW(path, 0, size, resource.data())) return;

    void* table = nullptr;
    UINT tableBytes = 0;
    if (!::VerQueryValueW(resource.data(), L"\\VarFileInfo\\Translation", &table, &tableBytes) || table == nullptr) {
        return;
    }
    const auto* translations = static_cast<const LanguageAndCodePage*>(table);
    for (size_t index = 0; index < tableBytes / sizeof(LanguageAndCodePage); ++index) {
        VStringBuffer query;
        query.AppendFormat(L"\\StringFileInfo\\%04x%04x\\FileDescription", translations[index].language,
                           translations[index].codePage);
        void* value = nullptr;
        UINT length = 0;
        if (!::VerQueryValueW(resource.data(), query.c_str(), &value, &length) || value == nullptr) continue;
        const auto* description = static_cast<const wchar_t*>(value);
        // An empty description names nothing, and an empty option name could not be written.
        const size_t descriptionLength = ::wcsnlen(description, length);
        if (descriptionLength != 0) SetName(name, description, descriptionLength);
    }
}

// The process the spooler says the print host serves now; 0 when it does not say.
DWORD SpoolerClient() {
    PrintExecutionData execution{};
    return CurrentProcessInspection().getPrintExecutionData(&execution) ? execution.clientProcessId : 0;
}

void NameSpoolerClient(VStringBuffer& name) {
    const ProcessInspection& inspect = CurrentProcessInspection();
    const DWORD clientId = SpoolerClient();
    if (clientId == 0) return;
    const InspectedProcess client(inspect.openProcess(kAllAccess, FALSE, clientId));
    if (client.get() == nullptr) return;
    PathBuffer path{};
    if (ReadModulePath(client.get(), nullptr, path)) ReadFileDescription(path.data(), name);
}

// Looks at no more than kMaxModules modules, however many the process has.
bool HasLoadedModule(const wchar_t* sign) {
    const ProcessInspection& inspect = CurrentProcessInspection();
    const InspectedProcess self(inspect.openProcess(kQueryAndRead, FALSE, inspect.getCurrentProcessId()));
    if (self.get() == nullptr) return false;
    std::array<HMODULE, kMaxModules> modules{};
    DWORD neededBytes = 0;
    if (!inspect.enumProcessModules(self.get(), modules.data(), sizeof(modules), &neededBytes)) return false;
    const size_t count = std::min<size_t>(neededBytes / sizeof(HMODULE), modules.size());
    for (size_t index = 0; index < count; ++index) {
        PathBuffer path{};
        if (ReadModulePath(self.get(), modules[index], path) && std::wcsstr(path.data(), sign) != nullptr) return true;
    }
    return false;
}

bool CommandLineNames(const wchar_t* sign) {
    const wchar_t* commandLine = CurrentProcessInspection().getCommandLine();
    return commandLine != nullptr && std::wcsstr(commandLine, sign) != nullptr;
}

const HostRule* FindHostRule(const PathBuffer& path) {
    const PathBuffer upperPath = UpperCased(path);
    for (const HostRule& rule : kHostRules) {
        const wchar_t* tested = rule.upperCasePath ? upperPath.data() : path.data();
        if (std::wcsstr(tested, rule.pathMarker) != nullptr) return &rule;
    }
    return nullptr;
}

void NameFromHost(const HostRule& host, VStringBuffer& name) {
    bool recognised = false;
    switch (host.evidence) {
    case Evidence::SpoolerClient: NameSpoolerClient(name); return;
    case Evidence::LoadedModule: recognised = HasLoadedModule(host.sign); break;
    case Evidence::CommandLine: recognised = CommandLineNames(host.sign); break;
    case Evidence::Nothing: break;
    }
    if (recognised) SetName(name, host.application, std::wcslen(host.application));
}

void ApplyRenames(VStringBuffer& name) {
    for (const auto& rename : kRenamedApplications) {
        if (std::wcscmp(name.c_str(), rename.description) == 0) {
            SetName(name, rename.application, std::wcslen(rename.application));
        }
    }
}

// What the process learnt about the printing application, for the inspection table of its
// generation.
struct KnownApplication {
    bool known = false;
    unsigned generation = 0;
    bool servesClients = false;  // the print host of 32-bit applications
    DWORD client = 0;            // the client the name belongs to, when it serves clients
    std::wstring name;
};
SRWLOCK g_knownLock = SRWLOCK_INIT;
KnownApplication g_known;

std::optional<std::wstring> KnownName(unsigned generation) {
    ::AcquireSRWLockShared(&g_knownLock);
    const KnownApplication known = g_known;
    ::ReleaseSRWLockShared(&g_knownLock);
    if (!known.known || known.generation != generation) return std::nullopt;
    if (known.servesClients && SpoolerClient() != known.client) return std::nullopt;
    return known.name;
}

void Remember(const KnownApplication& application) {
    ::AcquireSRWLockExclusive(&g_knownLock);
    g_known = application;
    ::ReleaseSRWLockExclusive(&g_knownLock);
}

bool ServesSpoolerClients() {
    PathBuffer path{};
    const HostRule* host = ReadOwnPath(path) ? FindHostRule(path) : nullptr;
    return host != nullptr && host->evidence == Evidence::SpoolerClient;
}

// The replacement is built before the old feature is removed, so that a failure to build it
// leaves the ticket as it was.
HRESULT WriteApplicationTracking(VPrintTicketHandler& ticket, const wchar_t* application) {
    zx::ComPtr<IXMLDOMElement> feature;
    zx::ComPtr<IXMLDOMElement> option;
    ZX_RETURN_IF_FAILED(ticket.CreatePrefixedFeatureOption(PrivateFeature::JobZXApplicationTracking, application,
                                                           &feature, &option, Prefix::Private, Prefix::Private));
    ZX_RETURN_IF_FAILED(ticket.DeletePrefixedFeature(PrivateFeature::JobZXApplicationTracking, Prefix::Private));
    ZX_RETURN_IF_FAILED(ticket.AppendToRoot(Vocabulary::PrintTicket, feature.Get()));
    ::OutputDebugStringW(L"Element appended successfully...");
    return S_OK;
}

}  // namespace

VStringBuffer DetectPrintingApplication() {
    VStringBuffer name(kUnknown);
    PathBuffer path{};
    if (ReadOwnPath(path)) {
        const HostRule* host = FindHostRule(path);
        if (host != nullptr) {
            NameFromHost(*host, name);
        } else {
            ReadFileDescription(path.data(), name);
        }
    }
    ApplyRenames(name);
    MakeOptionName(name);
    return name;
}

void MakeOptionName(VStringBuffer& name) {
    std::wstring valid(name.c_str(), name.Length());
    for (size_t at = 0; at < valid.size(); ++at) {
        if (IsHighSurrogate(valid[at]) && at + 1 < valid.size() && IsLowSurrogate(valid[at + 1])) {
            ++at;
        } else if (!InRanges(kNameStartCharacters, valid[at]) && !InRanges(kNameFollowingCharacters, valid[at])) {
            valid[at] = L'_';
        }
    }
    if (!valid.empty() && !IsHighSurrogate(valid[0]) && !InRanges(kNameStartCharacters, valid[0])) {
        valid.insert(valid.begin(), L'_');
    }
    if (valid.size() > kMaxApplicationName) valid.resize(kMaxApplicationName);
    if (!valid.empty() && IsHighSurrogate(valid.back())) valid.pop_back();  // its pair was cut off
    SetName(name, valid.c_str(), valid.size());
}

std::wstring PrintingApplicationName() {
    const unsigned generation = ProcessInspectionGeneration();
    if (std::optional<std::wstring> known = KnownName(generation)) return *known;
    KnownApplication application{true, generation, ServesSpoolerClients(), 0, {}};
    if (application.servesClients) application.client = SpoolerClient();
    application.name = DetectPrintingApplication().c_str();
    Remember(application);
    return application.name;
}

void RecordPrintingApplication(VPrintTicketHandler& ticket) noexcept {
    zx::CatchAll([&] {
        ZX_RETURN_IF_FAILED(
            ticket.FindPrefixedFeature(PrivateFeature::JobZXApplicationTracking, Prefix::Framework, Prefix::Private));
        return WriteApplicationTracking(ticket, PrintingApplicationName().c_str());
    });
}
