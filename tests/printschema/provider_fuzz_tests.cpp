// Hostile PrintTickets and private blocks through every operation of the provider: elements
// dropped, duplicated and renamed, prefixes changed, huge names and values, random private
// blocks, DEVMODE headers whose size fields lie. Every call must come back with an HRESULT, give
// back every reference it took and never tell the core driver a DEVMODE larger than the host's.
// ZX_FUZZ_ITERATIONS sets the number of mutated tickets (a fixed seed makes runs repeatable).
#include "drvhost/core_driver.h"
#include "drvhost/print_schema.h"
#include "drvhost/printer_install.h"
#include "printschema/print_schema_names.h"
#include "tests/printschema/dom_support.h"
#include "tests/support/fake_core_helper.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <vector>

using namespace drvhost;

namespace {

int Iterations() {
    const char* configured = std::getenv("ZX_FUZZ_ITERATIONS");
    return configured ? std::atoi(configured) : 3000;
}

class TicketMutator {
public:
    explicit TicketMutator(std::mt19937& random) : m_random(random) {}

    // The base ticket's text with a few prefixes changed, then one to four DOM mutations.
    zx::ComPtr<IXMLDOMDocument2> Mutate(std::wstring text) {
        if (Chance(4)) zxtest::ReplaceAll(text, L"psk:", L"k:");
        if (Chance(8)) zxtest::ReplaceAll(text, L"ns0000:", L"ns9:");
        if (Chance(16)) zxtest::ReplaceAll(text, L"xmlns:psf=", L"xmlns:psx=");
        auto ticket = zxtest::LoadDocument(text);
        for (int count = 1 + Pick(4); count > 0; --count) MutateOnce(ticket.Get());
        return ticket;
    }

private:
    bool Chance(int oneIn) { return Pick(oneIn) == 0; }
    int Pick(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(m_random); }

    zx::ComPtr<IXMLDOMNode> RandomElement(IXMLDOMDocument2* ticket) {
        zx::ComPtr<IXMLDOMNodeList> nodes;
        long count = 0;
        if (FAILED(ticket->selectNodes(zx::MakeBstr(L"//*").get(), &nodes)) || FAILED(nodes->get_length(&count)) ||
            count < 2) {
            return nullptr;
        }
        zx::ComPtr<IXMLDOMNode> node;
        nodes->get_item(1 + Pick(static_cast<int>(count - 1)), &node);  // never the root
        return node;
    }

    std::wstring Garbage() {
        static const std::wstring names[] = {L"psk:PageMediaType", L"ns0000:JobMediaTypePrev", L"psk:DocumentNUp",
                                             L"ns0000:", L"psk:", L"", L":", L"a'b\"c", L"undeclared:X"};
        if (Chance(4)) return std::wstring(100000, static_cast<wchar_t>(L'A' + Pick(26)));
        return names[Pick(static_cast<int>(std::size(names)))];
    }

    void MutateOnce(IXMLDOMDocument2* ticket) {
        zx::ComPtr<IXMLDOMNode> node = RandomElement(ticket);
        if (!node) return;
        zx::ComPtr<IXMLDOMNode> parent, unused;
        node->get_parentNode(&parent);
        zx::ComPtr<IXMLDOMElement> element;
        node->QueryInterface(IID_IXMLDOMElement, reinterpret_cast<void**>(element.GetAddressOf()));
        switch (Pick(4)) {
        case 0:
            parent->removeChild(node.Get(), &unused);
            break;
        case 1: {
            zx::ComPtr<IXMLDOMNode> copy;
            node->cloneNode(VARIANT_TRUE, &copy);
            parent->appendChild(copy.Get(), &unused);
            break;
        }
        case 2:
            if (element) {
                zx::unique_variant value;
                value.get()->vt = VT_BSTR;
                value.get()->bstrVal = zx::MakeBstr(Garbage().c_str()).release();
                element->setAttribute(zx::MakeBstr(L"name").get(), *value);
            }
            break;
        default:
            node->put_text(zx::MakeBstr(Garbage().c_str()).get());
            break;
        }
    }

    std::mt19937& m_random;
};

}  // namespace

TEST(ProviderRobustness, HostileTicketsAndBlocksGiveHResultsAndKeepNoReferences) {
    CoreDriver core(LoadPrinterDescription(ProgramDirectory() + kDescriptionFile));
    JobDevMode job(core.Description(), 64, L"ZX");
    zxtest::FakeCoreHelper checked;  // the core driver's helper, with the sizes it is told recorded
    checked.behaviour = zxtest::FakeCoreHelper::Behaviour::Forward;
    checked.forwardTo = core.CoreHelper();
    auto provider = zxtest::CreateTicketProvider();
    ASSERT_EQ(S_OK, zxtest::BindToPrinter(provider.Get()));
    ASSERT_EQ(S_OK, provider->PublishPrintTicketHelper(static_cast<IPrintOemDriverUI*>(&checked)));

    const std::wstring base = BuildPrintTicket(core.Description(), [&job](size_t f) { return job.Selection(f); },
                                               PrintSchema::Uri::Device);
    const auto capabilities = zxtest::LoadDocument(BuildPrintCapabilities(core.Description(), PrintSchema::Uri::Device));
    std::mt19937 random(20261122);
    TicketMutator mutator(random);
    for (int iteration = 0, total = Iterations(); iteration < total; ++iteration) {
        auto ticket = mutator.Mutate(base);
        std::vector<BYTE> block(std::uniform_int_distribution<size_t>(1, 128)(random));
        for (BYTE& byte : block) byte = static_cast<BYTE>(random());
        const ULONG blockSize = static_cast<ULONG>(block.size());
        const ULONG before = zxtest::RefCount(ticket.Get());
        const DEVMODEW header = *job.Public();
        switch (std::uniform_int_distribution<int>(0, 7)(random)) {  // a header that claims more, less, anything
        case 0: job.Public()->dmDriverExtra = static_cast<WORD>(header.dmDriverExtra + 1 + random() % 60000); break;
        case 1: job.Public()->dmDriverExtra = static_cast<WORD>(random() % header.dmDriverExtra); break;
        case 2: job.Public()->dmSize = static_cast<WORD>(random()); break;
        default: break;
        }

        provider->ConvertDevModeToPrintTicket(job.TotalSize(), job.Public(), blockSize, block.data(), ticket.Get());
        provider->ConvertPrintTicketToDevMode(ticket.Get(), job.TotalSize(), job.Public(), blockSize, block.data());
        provider->CompletePrintCapabilities(ticket.Get(), capabilities.Get());
        provider->CompletePrintCapabilities(nullptr, ticket.Get());
        const HRESULT verdict = provider->ValidatePrintTicket(ticket.Get());
        EXPECT_TRUE(verdict == S_PT_NO_CONFLICT || FAILED(verdict)) << "iteration " << iteration;
        ASSERT_EQ(before, zxtest::RefCount(ticket.Get())) << "iteration " << iteration;
        ASSERT_LE(checked.largestDevModeSize, job.TotalSize()) << "iteration " << iteration;
        *job.Public() = header;
    }
    provider.Reset();
    EXPECT_EQ(1u, checked.RefCount());  // only the test's own
}
