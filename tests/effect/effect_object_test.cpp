#include "tests/effect/effect_fixture.h"

#include <objsafe.h>

#include <cmath>
#include <limits>

namespace
{

class EffectObject : public EffectTest
{
};

} // namespace

TEST_F(EffectObject, AFreshEffectReportsItsDefaults)
{
    float value = -1.0F;
    EXPECT_EQ(effect->get_Duration(&value), S_OK);
    EXPECT_EQ(value, 0.5F);
    EXPECT_EQ(effect->get_StepResolution(&value), S_OK);
    EXPECT_EQ(value, 1.0F);
    EXPECT_EQ(effect->get_Progress(&value), S_OK);
    EXPECT_EQ(value, 0.0F);
    LONG capabilities = -1;
    EXPECT_EQ(effect->get_Capabilities(&capabilities), S_OK);
    EXPECT_EQ(capabilities, 0);
    EXPECT_EQ(effect->m_dwOptionFlags, 12U);
}

TEST_F(EffectObject, TakesOneInputAndRequiresIt)
{
    CComPtr<IDXTransform> transform;
    ASSERT_EQ(effect.QueryInterface(&transform), S_OK);
    DWORD flags = 99;
    ULONG ids = 0;
    EXPECT_EQ(transform->GetInOutInfo(FALSE, 0, &flags, nullptr, &ids, nullptr), S_OK);
    EXPECT_EQ(flags, 0U) << "not optional";
    EXPECT_EQ(transform->GetInOutInfo(FALSE, 1, &flags, nullptr, &ids, nullptr), S_FALSE);
}

TEST_F(EffectObject, ProgressIsAcceptedFromZeroToOneAndRefusedOutside)
{
    EXPECT_EQ(effect->put_Progress(1.0F), S_OK);
    EXPECT_EQ(effect->put_Progress(0.0F), S_OK);
    EXPECT_EQ(effect->put_Progress(0.25F), S_OK);
    EXPECT_EQ(effect->put_Progress(1.0001F), E_INVALIDARG);
    EXPECT_EQ(effect->put_Progress(-0.0001F), E_INVALIDARG);
    EXPECT_EQ(effect->put_Progress(std::numeric_limits<float>::quiet_NaN()), E_INVALIDARG);
    float value = 0.0F;
    EXPECT_EQ(effect->get_Progress(&value), S_OK);
    EXPECT_EQ(value, 0.25F);
}

TEST_F(EffectObject, DurationIsAcceptedAboveZeroOnly)
{
    EXPECT_EQ(effect->put_Duration(0.0F), E_INVALIDARG);
    EXPECT_EQ(effect->put_Duration(-1.0F), E_INVALIDARG);
    EXPECT_EQ(effect->put_Duration(std::numeric_limits<float>::quiet_NaN()), E_INVALIDARG);
    EXPECT_EQ(effect->put_Duration(2.5F), S_OK);
    float value = 0.0F;
    EXPECT_EQ(effect->get_Duration(&value), S_OK);
    EXPECT_EQ(value, 2.5F);
}

TEST_F(EffectObject, ProgressRaisesBothChangeCountersEveryTime)
{
    const DWORD generation = effect->m_dwGenerationId;
    const DWORD clean = effect->m_dwCleanGenId;
    effect->put_Progress(0.5F);
    effect->put_Progress(0.5F);
    EXPECT_EQ(effect->m_dwGenerationId, generation + 2);
    EXPECT_EQ(effect->m_dwCleanGenId, clean + 2);
    effect->put_Progress(7.0F);
    EXPECT_EQ(effect->m_dwGenerationId, generation + 2) << "a refused value changes nothing";
}

TEST_F(EffectObject, DurationRaisesBothChangeCountersOnlyWhenItChanges)
{
    const DWORD generation = effect->m_dwGenerationId;
    const DWORD clean = effect->m_dwCleanGenId;
    EXPECT_EQ(effect->put_Duration(0.5F), S_OK);
    EXPECT_EQ(effect->m_dwGenerationId, generation);
    EXPECT_EQ(effect->put_Duration(0.75F), S_OK);
    EXPECT_EQ(effect->m_dwGenerationId, generation + 1);
    EXPECT_EQ(effect->m_dwCleanGenId, clean + 1);
}

TEST_F(EffectObject, GettersAnswerPointerErrorsForPlacesThatCannotBeWritten)
{
    auto* const unwritable = reinterpret_cast<float*>(std::uintptr_t{8});
    EXPECT_EQ(effect->get_Capabilities(nullptr), E_POINTER);
    EXPECT_EQ(effect->get_Capabilities(reinterpret_cast<LONG*>(unwritable)), E_POINTER);
    EXPECT_EQ(effect->get_Progress(nullptr), E_POINTER);
    EXPECT_EQ(effect->get_StepResolution(nullptr), E_POINTER);
    EXPECT_EQ(effect->get_Duration(unwritable), E_POINTER);
}

TEST_F(EffectObject, AnswersEveryInterfaceWithOneIdentity)
{
    const IID* const interfaces[] = {&IID_ISfVideoPluginExtension,
                                     &IID_IDXTSfAutomation,
                                     &IID_IStaticFilterPreset,
                                     &IID_IPersistStreamInit,
                                     &IID_ISfExchangeProps,
                                     &IID_IPlugin,
                                     &IID_IDispatch,
                                     &IID_IMarshal,
                                     &IID_IDXEffect,
                                     &IID_IObjectSafety,
                                     &IID_IPersistStorage,
                                     &IID_ISpecifyPropertyPages,
                                     &IID_IPersistPropertyBag,
                                     &IID_IDXTransform,
                                     &IID_IDXBaseObject,
                                     &IID_IDXSurfacePick,
                                     &IID_IObjectWithSite};
    CComPtr<IUnknown> identity;
    ASSERT_EQ(effect->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
    for (const IID* iid : interfaces)
    {
        CComPtr<IUnknown> other;
        ASSERT_EQ(identity->QueryInterface(*iid, reinterpret_cast<void**>(&other)), S_OK)
            << "interface " << iid->Data1;
        CComPtr<IUnknown> back;
        ASSERT_EQ(other->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&back)), S_OK);
        EXPECT_EQ(back.p, identity.p) << "interface " << iid->Data1;
    }
}

// Hosts were built with these; a mistyped one would agree with itself everywhere else.
TEST_F(EffectObject, TheIdentifiersAreThoseThatHostsKnow)
{
    struct Row
    {
        const wchar_t* text;
        const IID& declared;
    };
    const Row rows[] = {{L"{709BA0D3-F965-11D1-9AA9-00A0C99B12C5}", IID_ISfVideoPluginExtension},
                        {L"{709BA0D6-F965-11D1-9AA9-00A0C99B12C5}", IID_ISfFrameInformation},
                        {L"{8D506FC4-9541-11D2-9601-00C04F8EDC2D}", IID_IDXTSfAutomation},
                        {L"{36A22460-0CC9-11D0-8574-00A0C9053912}", IID_IStaticFilterPreset},
                        {L"{0CC91747-EF4A-11D3-8558-00802968502D}", IID_ISfExchangeProps},
                        {L"{AC047D4A-B6BB-41DA-8284-910FC0BA3165}", IID_IPlugin},
                        {L"{E31FB81B-1335-11D1-8189-0000F87557DB}", IID_IDXEffect},
                        {L"{30A5FB78-E11F-11D1-9064-00C04FD9189D}", IID_IDXTransform},
                        {L"{30A5FB79-E11F-11D1-9064-00C04FD9189D}", IID_IDXSurfacePick},
                        {L"{17B59B2B-9CC8-11D1-9053-00C04FD9189D}", IID_IDXBaseObject},
                        {L"{B39FD73F-E139-11D1-9065-00C04FD9189D}", IID_IDXSurface},
                        {L"{EAAAC2D6-C290-11D1-905D-00C04FD9189D}", IID_IDXARGBReadPtr},
                        {L"{EAAAC2D7-C290-11D1-905D-00C04FD9189D}", IID_IDXARGBReadWritePtr}};
    for (const Row& row : rows)
    {
        IID iid{};
        ASSERT_EQ(::IIDFromString(row.text, &iid), S_OK) << row.text;
        EXPECT_EQ(iid, row.declared) << row.text;
    }
}

TEST_F(EffectObject, TheFirstEntryOfTheMapIsTheIdentity)
{
    CComPtr<IUnknown> identity;
    effect->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity));
    EXPECT_EQ(identity.p, static_cast<IUnknown*>(static_cast<ISfVideoPluginExtension*>(effect.p)));
}

TEST_F(EffectObject, IsMarshalledFreely)
{
    CComPtr<IMarshal> marshal;
    ASSERT_EQ(effect->QueryInterface(IID_IMarshal, reinterpret_cast<void**>(&marshal)), S_OK);
    CComPtr<IUnknown> freeThreaded;
    ASSERT_EQ(::CoCreateFreeThreadedMarshaler(nullptr, &freeThreaded), S_OK);
    CComPtr<IMarshal> expected;
    ASSERT_EQ(freeThreaded->QueryInterface(IID_IMarshal, reinterpret_cast<void**>(&expected)),
              S_OK);
    const auto unmarshalClass = [&](IMarshal* by) {
        CLSID classId{};
        EXPECT_EQ(by->GetUnmarshalClass(IID_IUnknown, effect->GetUnknown(), MSHCTX_INPROC, nullptr,
                                        MSHLFLAGS_NORMAL, &classId),
                  S_OK);
        return classId;
    };
    EXPECT_EQ(unmarshalClass(marshal), unmarshalClass(expected));
}

TEST_F(EffectObject, ListsItsOnePropertyPage)
{
    CAUUID pages{};
    ASSERT_EQ(effect->GetPages(&pages), S_OK);
    ASSERT_EQ(pages.cElems, 1U);
    EXPECT_EQ(pages.pElems[0], CLSID_PluginPP);
    ::CoTaskMemFree(pages.pElems);
}

TEST_F(EffectObject, ObjectSafetyKnowsItsFourInterfacesAndOneOption)
{
    CComPtr<IObjectSafety> safety;
    ASSERT_EQ(effect->QueryInterface(IID_IObjectSafety, reinterpret_cast<void**>(&safety)), S_OK);
    for (const IID* iid :
         {&IID_IDispatch, &IID_IPersistPropertyBag, &IID_IPersistStorage, &IID_IPersistStream})
    {
        DWORD supported = 9;
        DWORD enabled = 9;
        EXPECT_EQ(safety->GetInterfaceSafetyOptions(*iid, &supported, &enabled), S_OK);
        EXPECT_EQ(supported, 1U);
        EXPECT_EQ(enabled, 0U);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(*iid, 3, 3), S_OK);
        EXPECT_EQ(safety->GetInterfaceSafetyOptions(*iid, &supported, &enabled), S_OK);
        EXPECT_EQ(enabled, 1U);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(*iid, 2, 1), S_OK);
        EXPECT_EQ(safety->GetInterfaceSafetyOptions(*iid, &supported, &enabled), S_OK);
        EXPECT_EQ(enabled, 0U) << "outside the mask";
    }
    DWORD supported = 9;
    DWORD enabled = 9;
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IUnknown, &supported, &enabled), E_NOINTERFACE);
    EXPECT_EQ(supported, 0U);
    EXPECT_EQ(enabled, 0U);
    EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IUnknown, 1, 1), E_NOINTERFACE);
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IDispatch, nullptr, &enabled), E_POINTER);
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IDispatch, &supported, nullptr), E_POINTER);
}

TEST_F(EffectObject, DispatchReportsTypeInformationThatIsNotRegistered)
{
    UINT count = 0;
    EXPECT_EQ(effect->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    CComPtr<ITypeInfo> information;
    EXPECT_EQ(effect->GetTypeInfo(0, LOCALE_USER_DEFAULT, &information), TYPE_E_LIBNOTREGISTERED);
}

TEST_F(EffectObject, EachEffectStartsTheRendererOnceInModeThree)
{
    EXPECT_EQ(recording.count, 1U);
    CComObject<OpenPlugin>* object = nullptr;
    ASSERT_EQ(CComObject<OpenPlugin>::CreateInstance(&object), S_OK);
    const CComPtr<OpenPlugin> second = object;
    ASSERT_EQ(recording.count, 2U);
    EXPECT_EQ(recording.calls[0].call, Call::InitRenderer);
    EXPECT_EQ(recording.calls[1].call, Call::InitRenderer);
    EXPECT_EQ(recording.calls[1].word1, 3U);
}

TEST_F(EffectObject, ThePreviewFrameIsAnEmptyRecordBeforeTheFirstFrame)
{
    const FrameBufferDesc* const preview = effect->GetPreviewFrame();
    ASSERT_NE(preview, nullptr);
    EXPECT_FALSE(preview->IsValid());
    EXPECT_EQ(preview->format, 1U);
    EXPECT_EQ(preview->scale, 1.0F);
    EXPECT_EQ(preview->aspect, 1.0F);
    EXPECT_EQ(preview->minValue, -1000.0F);
    EXPECT_EQ(preview->maxValue, 1000.0F);
}

TEST_F(EffectObject, CanBeAggregated)
{
    class Outer : public IUnknown
    {
    public:
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
        {
            if (iid == IID_IUnknown)
            {
                AddRef();
                *object = this;
                return S_OK;
            }
            return inner->QueryInterface(iid, object);
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
        ULONG STDMETHODCALLTYPE Release() override { return --references; }
        CComPtr<IUnknown> inner;
        ULONG references = 1;
    };
    Outer outer;
    ASSERT_EQ(CPlugin::_CreatorClass::CreateInstance(static_cast<IUnknown*>(&outer), IID_IUnknown,
                                                     reinterpret_cast<void**>(&outer.inner)),
              S_OK);
    CComPtr<IDXTransform> transform;
    ASSERT_EQ(outer.QueryInterface(IID_IDXTransform, reinterpret_cast<void**>(&transform)), S_OK);
    CComPtr<IUnknown> identity;
    EXPECT_EQ(transform->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
    EXPECT_EQ(identity.p, &outer);
    CComPtr<IMarshal> marshal;
    EXPECT_EQ(transform->QueryInterface(IID_IMarshal, reinterpret_cast<void**>(&marshal)), S_OK);
    identity.Release();
    marshal.Release();
    transform.Release();
    EXPECT_EQ(outer.references, 1U);
}
