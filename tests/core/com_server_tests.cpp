// The COM server as the core driver and the XPS document converter meet it: through the DLL's
// exported entry points.
#include "core/class_factory.h"
#include "core/class_ids.h"
#include "core/ui_interface.h"
#include "settings/private_devmode.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

const CLSID kForeignClass = {0x12345678, 0x1234, 0x1234, {1, 2, 3, 4, 5, 6, 7, 8}};

ComPtr<IClassFactory> Factory(REFCLSID clsid) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(S_OK,
              Plugin().getClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(factory.GetAddressOf())));
    return factory;
}

// Whether the object that the factory hands out for riid answers to the interface that names it.
bool FactoryGives(REFCLSID clsid, REFIID riid, REFIID identity) {
    ComPtr<IUnknown> object, named;
    return SUCCEEDED(Factory(clsid)->CreateInstance(nullptr, riid, reinterpret_cast<void**>(object.GetAddressOf()))) &&
           SUCCEEDED(object->QueryInterface(identity, reinterpret_cast<void**>(named.GetAddressOf())));
}

}  // namespace

TEST(ClassObject, EachClassGivesAFactoryHeldOnlyByTheCallerAndWhatCannotBeServedIsRefused) {
    for (const CLSID& clsid : {CLSID_OEMUI, CLSID_OEMPTPROVIDER, CLSID_OEMUIMXDC}) {
        for (const IID& iid : {IID_IClassFactory, IID_IUnknown}) {
            IUnknown* factory = reinterpret_cast<IUnknown*>(0xdeadbeef);
            ASSERT_EQ(S_OK, Plugin().getClassObject(clsid, iid, reinterpret_cast<void**>(&factory)));
            ASSERT_NE(nullptr, factory);
            EXPECT_EQ(1u, RefCount(factory));
            EXPECT_EQ(0u, factory->Release());
        }
    }

    // What the class object and the factory cannot serve is refused, and the output cleared.
    void* object = reinterpret_cast<void*>(0xdeadbeef);
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, Plugin().getClassObject(kForeignClass, IID_IClassFactory, &object));
    EXPECT_EQ(nullptr, object);
    object = reinterpret_cast<void*>(0xdeadbeef);
    EXPECT_EQ(E_NOINTERFACE, Plugin().getClassObject(CLSID_OEMUI, IID_IPrintOemUI, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_POINTER, Plugin().getClassObject(CLSID_OEMUI, IID_IClassFactory, nullptr));

    ComPtr<IClassFactory> factory = Factory(CLSID_OEMUI);
    object = reinterpret_cast<void*>(0xdeadbeef);
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(factory.Get(), IID_IPrintOemUI, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, IID_IPrintOemUI, nullptr));
    object = reinterpret_cast<void*>(0xdeadbeef);
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IClassFactory, &object));
    EXPECT_EQ(nullptr, object);
}

TEST(ClassFactory, ChoosesTheObjectFromTheInterfaceAloneAndDestroysTheOnesItRejects) {
    // The class asked for does not matter: each factory offers the UI object, the provider,
    // then the converter object.
    for (const CLSID& clsid : {CLSID_OEMUI, CLSID_OEMPTPROVIDER, CLSID_OEMUIMXDC}) {
        for (const IID& iid : {IID_IPrintOemUI, IID_IPrintOemPrintTicketProvider, IID_IPrintOemUIMXDC}) {
            EXPECT_TRUE(FactoryGives(clsid, iid, iid));
        }
        EXPECT_TRUE(FactoryGives(clsid, IID_IUnknown, IID_IPrintOemUI));  // taken by the first object tried
    }

    // Objects rejected along the way are destroyed; an in-process factory shows the UI object's count.
    auto* factory = new VUIClassFactory();
    void* object = nullptr;
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IDispatch, &object));
    EXPECT_EQ(0, VUIInterfaceImpl::LiveCount());

    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IPrintOemPrintTicketProvider, &object));
    EXPECT_EQ(0, VUIInterfaceImpl::LiveCount());
    static_cast<IUnknown*>(object)->Release();
    EXPECT_EQ(0u, factory->Release());
}

TEST(ClassFactory, OnlyLockServerHoldsTheModule) {
    ComPtr<IPrintOemUI> alive = CreateUiObject();
    ASSERT_TRUE(alive);
    EXPECT_EQ(S_OK, Plugin().canUnloadNow());

    ComPtr<IClassFactory> factory = Factory(CLSID_OEMUI);
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    EXPECT_EQ(S_OK, factory->LockServer(FALSE));
    EXPECT_EQ(S_FALSE, Plugin().canUnloadNow());
    EXPECT_EQ(S_OK, factory->LockServer(FALSE));
    EXPECT_EQ(S_OK, Plugin().canUnloadNow());
}

TEST(PluginObjects, ReferenceCountsAndQueryInterfaceFollowTheComRules) {
    ComPtr<IUnknown> objects[] = {CreateUiObject(), CreateTicketProvider(), CreateXpsConverterObject()};
    for (ComPtr<IUnknown>& holder : objects) {
        ASSERT_TRUE(holder);
        IUnknown* object = holder.Detach();
        EXPECT_EQ(2u, object->AddRef());
        EXPECT_EQ(1u, object->Release());

        EXPECT_EQ(E_POINTER, object->QueryInterface(IID_IUnknown, nullptr));
        void* other = reinterpret_cast<void*>(0xdeadbeef);
        // Each object answers to IUnknown and its own interface only.
        EXPECT_EQ(E_NOINTERFACE, object->QueryInterface(IID_IPrintOemCommon, &other));
        EXPECT_EQ(nullptr, other);

        IUnknown* same = nullptr;
        EXPECT_EQ(S_OK, object->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&same)));
        EXPECT_EQ(1u, same->Release());
        EXPECT_EQ(0u, object->Release());
    }
}

TEST(PluginObjects, MethodsSitInTheDocumentedVtableSlots) {
    ComPtr<IPrintOemUI> ui = CreateUiObject();
    DWORD signature = 0, needed = 0;
    EXPECT_EQ(S_OK, CallSlot<HRESULT>(ui.Get(), PrintOemSlot::GetInfo, DWORD{OEMGI_GETSIGNATURE},
                                      static_cast<PVOID>(&signature), DWORD{4}, &needed));
    EXPECT_EQ(0x5844534Du, signature);
    OEMDMPARAM param{};
    EXPECT_EQ(S_OK, CallSlot<HRESULT>(ui.Get(), PrintOemSlot::DevMode, DWORD{OEMDM_SIZE}, &param));
    EXPECT_EQ(64u, param.cbBufSize);
    EXPECT_EQ(E_POINTER,
              CallSlot<HRESULT>(ui.Get(), PrintOemSlot::PublishDriverInterface, static_cast<IUnknown*>(nullptr)));
    EXPECT_EQ(E_NOTIMPL, CallSlot<HRESULT>(ui.Get(), PrintOemSlot::QueryColorProfile, HANDLE{}, POEMUIOBJ{},
                                           PDEVMODEW{}, PVOID{}, ULONG{QCP_SOURCEPROFILE}, PVOID{},
                                           static_cast<ULONG*>(nullptr), static_cast<FLONG*>(nullptr)));

    ComPtr<IPrintOemPrintTicketProvider> provider = CreateTicketProvider();
    INT* versions = nullptr;
    INT count = 0;
    EXPECT_EQ(S_OK, CallSlot<HRESULT>(provider.Get(), PrintOemSlot::GetSupportedVersions, HANDLE{}, &versions, &count));
    ASSERT_EQ(1, count);
    EXPECT_EQ(1, versions[0]);
    CoTaskMemFree(versions);
    EXPECT_EQ(E_POINTER, provider->GetSupportedVersions(nullptr, nullptr, nullptr));

    ComPtr<IPrintOemUIMXDC> converter = CreateXpsConverterObject();
    VPrivateDevMode block{};
    block.dwForce300Dpi = 1;
    INT dpi = 600;
    EXPECT_EQ(S_OK, CallSlot<HRESULT>(converter.Get(), PrintOemSlot::AdjustDPI, HANDLE{}, ULONG{0}, PDEVMODEW{},
                                      ULONG{sizeof(block)}, static_cast<PVOID>(&block), &dpi));
    EXPECT_EQ(300, dpi);
}
