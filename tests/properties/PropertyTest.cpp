// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"
#include "support/Validator.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace {

using namespace Gentra;
using namespace Support;
using Util::RefCountPtr;

constexpr int POINTER = sizeof(void*);
constexpr unsigned short LETTERS[] = {'h', 'i', 0};
unsigned short const* const HI = LETTERS;

std::size_t LengthOf(void const* text) {
    return TextProperty::GetStringFromPropertyData(text)->size();
}
/// Text is set from a pointer to its letters.
void* Source() {
    return const_cast<unsigned short const**>(&HI);
}

// Parameters.

TEST(Parameters, TakeTheirDefaultByType) {
    float numbers[] = {1.5f, 2.5f, 3.5f};
    for (PropertyType const type :
         {UNDEFINED, VALUE, VECTOR, MEMBERSELECTION, BEHAVIOUR, DATAREFERENCE, FIXEDSIZEDATA, TEXT}) {
        Parameter const parameter(MEMBER, type, "v", UNIQUE_INTRINSIC, numbers);
        EXPECT_EQ(parameter.owner, MEMBER);
        EXPECT_EQ(parameter.scope, UNIQUE_INTRINSIC);
        EXPECT_EQ(parameter.value, type == VALUE ? 1.5f : 0.0f);
        EXPECT_EQ(parameter.vector.z, type == VECTOR ? 3.5f : 0.0f);
        EXPECT_EQ(parameter.defaultData, type == FIXEDSIZEDATA ? numbers : nullptr);
    }
    EXPECT_EQ(Parameter(POOL, VECTOR, "v", VISIBLE, nullptr).vector.x, 0.0f);
    Parameter again(MEMBER, VECTOR, "v", UNIQUE_INTRINSIC, numbers);
    again.MakeBehaviourInterfaceParameter(POOL, VECTOR, "w", VISIBLE);
    EXPECT_EQ(again.vector.z, 0.0f);
}

// The property classes.

TEST(Properties, StartInNoPoolUnderTheirDefaultName) {
    struct Row {
        PropertyPtr property;
        PropertyType type;
        int size;
        char const* name;
    };
    Util::ShortID former = Property::NIL->GetPropertyID();
    for (Row const& row : std::initializer_list<Row>{
             {new Property, UNDEFINED, 0, "None"},
             {new ValueProperty, VALUE, 4, "Value Property"},
             {new VectorProperty, VECTOR, 12, "Vector Property"},
             {new MemberSelectionProperty, MEMBERSELECTION, POINTER, "MemberSelection Property"},
             {new BehaviourProperty, BEHAVIOUR, POINTER, "Behaviour Property"},
             {new DataReferenceProperty, DATAREFERENCE, POINTER, "DataReference Property"},
             {new FixedSizeDataProperty(16, nullptr), FIXEDSIZEDATA, 16, "FixedSizeData Property"},
             {new TextProperty, TEXT, POINTER, "Text Property"},
             {new ValueProperty(std::string("named")), VALUE, 4, "named"},
             {new VectorProperty(std::string("named")), VECTOR, 12, "named"},
             {new FixedSizeDataProperty("named", 8, nullptr), FIXEDSIZEDATA, 8, "named"}}) {
        Property& property = *row.property;
        EXPECT_EQ(property.GetPropertyType(), row.type);
        EXPECT_EQ(property.type, row.type) << row.name;
        EXPECT_EQ(property.GetDataSize(), row.size) << row.name;
        EXPECT_EQ(property.GetName(), row.name);
        EXPECT_EQ(property.GetPropertyOwner(), FLEXIBLE);
        EXPECT_EQ(property.GetOwnerPool(), nullptr);
        EXPECT_EQ(property.property, &property);
        EXPECT_EQ(property.GetDataOffset(), -1);
        EXPECT_TRUE(property.ContainsValidData());
        EXPECT_EQ(property.GetData(), property.GetPoolData());
        EXPECT_NE(property.GetPropertyID(), std::exchange(former, property.GetPropertyID()));
        property.SetPoolData(nullptr);
        property.OnInstanceCreation(nullptr);
        property.OnInstanceDeletion(nullptr);
        property.Update();
    }
    EXPECT_EQ(Property::NIL->GetName(), "NULL");
    EXPECT_EQ(Property::EVENT.name, "Property");
    EXPECT_NE(MemberSelectionProperty::NIL.Get(), nullptr);
}

TEST(Properties, KeepTheirPoolDataAndCopyThem) {
    float number = 2.5f;
    ValueProperty value;
    value.SetData(&number);
    EXPECT_EQ(Datum::Read<float>(value.GetData()), 2.5f);
    VectorProperty vector;
    Math::Vec3 position(1, 2, 3);
    vector.SetPoolData(&position);
    EXPECT_EQ(vector.GetVector().z, 3.0f);
    value.Init("again");
    vector.Init("again");
    EXPECT_EQ(value.value + vector.vector.z, 0.0f);
    TestBehaviour target;
    Behaviour* pointer = &target;
    BehaviourProperty trigger;
    DataReferenceProperty reference;
    for (Property* const each : std::initializer_list<Property*>{&trigger, &reference}) {
        each->SetPoolData(&pointer);
        EXPECT_EQ(Datum::Read<void*>(each->GetPoolData()), pointer);
    }
    reference.Init("again", nullptr);
    EXPECT_EQ(Datum::Read<void*>(reference.GetPoolData()), nullptr);

    FixedSizeDataProperty block(16, nullptr);
    EXPECT_EQ(block.GetPoolData(), nullptr);
    std::array<unsigned char, 16> bytes{1, 2, 3};
    block.SetPoolData(bytes.data());
    void const* const first = block.GetPoolData();
    bytes[0] = 9;
    block.SetPoolData(bytes.data());
    EXPECT_EQ(block.GetPoolData(), first);
    EXPECT_EQ(std::memcmp(first, bytes.data(), 16), 0);
    FixedSizeDataProperty copied(std::as_const(block));
    copied = *&copied;
    EXPECT_NE(copied.GetPoolData(), first);
    EXPECT_EQ(std::memcmp(copied.GetPoolData(), first, 16), 0);

    TextProperty text;
    text.SetPoolData(Source());
    EXPECT_EQ(TextProperty::GetCharStringFromPropertyData(text.GetData())[1], 'i');
    TextProperty copy(std::as_const(text));
    TextProperty::SetStringToPropertyData(text.GetPoolData(), HI + 1);
    EXPECT_EQ(LengthOf(copy.GetPoolData()), 2u);
    EXPECT_EQ(text.GetText(), text.GetData());
    EXPECT_EQ(TextProperty::GetCharStringFromPropertyData(nullptr), nullptr);
    TextProperty::SetStringToPropertyData(text.GetPoolData(), nullptr);
    copy = text;
    EXPECT_EQ(LengthOf(copy.GetPoolData()), 1u);
    EXPECT_EQ(copy.GetPropertyID(), text.GetPropertyID());
    EXPECT_EQ(copy.property, &copy);
}

TEST(Properties, FindAMembersDatumByIndexOrActiveMember) {
    Pool pool;
    auto const value = Value("v", 7);
    auto const vector = Vector("w", {1, 2, 3});
    pool.AddMemberProperty(value);
    pool.AddMemberProperty(vector);
    pool.SetMemberCount(3);
    EXPECT_FALSE(value->ContainsValidData());
    EXPECT_EQ(value->GetData(), nullptr);
    EXPECT_EQ(vector->GetVector().x, 0.0f);
    EXPECT_EQ(vector->GetVectorFromMemberSelection(pool, 2).y, 2.0f);
    EXPECT_EQ(value->GetDataFromMemberSelection(pool, 3), nullptr);
    pool.ActivateMember(1);
    EXPECT_TRUE(value->ContainsValidData());
    float number = 9;
    value->SetData(&number);
    value->SetDataToMemberSelection(&number, pool, 5);
    value->SetDataToMemberSelection(nullptr, pool, 0);
    EXPECT_EQ(Datum::Read<float>(value->GetDataFromMemberSelection(pool, 1)), 9.0f);
    EXPECT_EQ(Datum::Read<float>(value->GetDataFromMemberSelection(pool, 0)), 7.0f);

    // Nor do they reach behind a record: in another pool, and after the layout has changed.
    VectorProperty copy(std::as_const(*vector));
    EXPECT_EQ(copy.GetData(), vector->GetData());
    Pool small("Small");
    small.AddMemberProperty(Value("v"));
    small.SetMemberCount(1);
    EXPECT_EQ(vector->GetDataFromMemberSelection(small, 0), nullptr);
    pool.InitializeMemberPool();
    pool.AddMemberProperty(Value("v"));
    pool.SetMemberCount(1);
    pool.ActivateFirstMember();
    EXPECT_EQ(copy.GetData(), nullptr) << "of an earlier layout";
}

TEST(Properties, AreMadeFromParameters) {
    Parameter parameter(MEMBER, VECTOR, "made", UNIQUE_INTRINSIC, nullptr);
    parameter.linkIndex = 4;
    parameter.fixedSize = 24;
    for (PropertyType const type : {VALUE, VECTOR, MEMBERSELECTION, DATAREFERENCE, FIXEDSIZEDATA, TEXT}) {
        parameter.type = type;
        PropertyPtr const made = PropertyFactory::CreateProperty(parameter);
        EXPECT_EQ(made->GetPropertyType(), type);
        EXPECT_EQ(made->property, made.Get());
        EXPECT_EQ(made->GetLinkIndex(), 4);
        EXPECT_EQ(made->GetDataSize() == 24, type == FIXEDSIZEDATA);
    }
    for (PropertyType const type : {UNDEFINED, BEHAVIOUR, static_cast<PropertyType>(99)}) {
        parameter.type = type;
        EXPECT_TRUE(PropertyFactory::CreateProperty(parameter) == Property::NIL);
    }
}

// What members receive.

class Functor : public InstanceCreationFunctor {
public:
    void CreateInstance(unsigned char* datum, int size) override {
        ++alive;
        lastSize = size;
        datum[0] = static_cast<unsigned char>(datum[0] + 1);
    }
    void DeleteInstance(unsigned char* datum, int) override {
        --alive;
        if (meddle) {
            meddle(Member(datum));
        }
    }
    int alive = 0;
    int lastSize = 0;
    std::function<void(Member)> meddle;
};

TEST(NewMembers, ReceiveEachPropertysDefaultAndInstance) {
    Functor functor;
    Pool pool;
    Pool base("Base");
    RefCountPtr<MemberSelectionProperty> const selections(new MemberSelectionProperty("s"));
    RefCountPtr<TextProperty> const text(new TextProperty("t"));
    RefCountPtr<FixedSizeDataProperty> const block(new FixedSizeDataProperty("f", 5, &functor));
    text->SetPoolData(Source());
    selections->SetBasePoolID(base.GetMemberPoolID());
    selections->SetBasePoolFromID();
    pool.AddMemberProperty(block);
    pool.AddMemberProperty(selections);
    pool.AddMemberProperty(text);
    pool.AddMemberProperty(PropertyPtr(new DataReferenceProperty("d", &functor)));
    pool.SetMemberCount(2);
    EXPECT_EQ(functor.alive, 4);
    EXPECT_EQ(functor.lastSize, POINTER);
    auto const* const bytes = static_cast<unsigned char const*>(block->GetDataFromMemberSelection(pool, 0));
    EXPECT_EQ(std::vector<int>(bytes, bytes + 5), (std::vector<int>{1, 0, 0, 0, 0})) << "zero bytes, then the functor";
    text->SetDataToMemberSelection(Source(), pool, 0);
    EXPECT_EQ(LengthOf(text->GetDataFromMemberSelection(pool, 0)), 2u);
    EXPECT_EQ(LengthOf(text->GetDataFromMemberSelection(pool, 1)), 0u);
    MemberSelection* const first = selections->GetMemberSelection(pool, 0);
    MemberSelection* const second = selections->GetMemberSelection(pool, 1);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->GetBasePool(), &base);
    EXPECT_EQ(selections->GetMemberSelection(pool, 2), nullptr);

    selections->SetMemberSelection(first, pool, 9); // nobody's: it is stored once, as before
    first->AddMember(base, Member());
    Member const victim = pool.RemoveMemberByIndex(0);
    pool.DeleteMember(victim);
    EXPECT_EQ(functor.alive, 2);
    EXPECT_EQ(first->GetNumMembers(), 0) << "somebody may still hold it";
    pool.AddNewMember();
    EXPECT_EQ(pool.GetMemberByIndex(1), victim);
    EXPECT_EQ(selections->GetMemberSelection(pool, 1), first) << "taken back and given out again";
    EXPECT_EQ(LengthOf(text->GetDataFromMemberSelection(pool, 1)), 0u) << "as good as new";
    text->SetDataToMemberSelection(Source(), pool, 1);
    pool.InitializeMemberPool();
    EXPECT_EQ(functor.alive, 4) << "clearing a pool deletes no instances";
    EXPECT_EQ(second->GetBasePool(), nullptr);
    pool.AddMemberProperty(text);
    pool.SetMemberCount(2);
    EXPECT_EQ(LengthOf(text->GetDataFromMemberSelection(pool, 0)), 0u);
    EXPECT_EQ(LengthOf(text->GetDataFromMemberSelection(pool, 1)), 0u);
}

TEST(NewMembers, HaveZeroBytesWhereAnAssignmentHasChangedTheSize) {
    Pool pool;
    RefCountPtr<FixedSizeDataProperty> const block(new FixedSizeDataProperty("f", 64, nullptr));
    pool.AddMemberProperty(block);
    for (unsigned int const size : {4u, 1000u}) {
        FixedSizeDataProperty other("o", size, nullptr);
        std::vector<unsigned char> bytes(size, 1);
        other.SetPoolData(bytes.data());
        *block = other;
        Member const member = pool.CreateNewMember();
        EXPECT_EQ(std::count(member.record, member.record + 64, 0), 64);
        pool.DeleteMember(member);
    }
}

TEST(NewMembers, NeverShareASelectionThatAnotherMemberStillHas) {
    Pool pool;
    RefCountPtr<MemberSelectionProperty> const selections(new MemberSelectionProperty("s"));
    pool.AddMemberProperty(selections);
    pool.SetMemberCount(2);
    MemberSelection* const ofFirst = selections->GetMemberSelection(pool, 0);
    selections->SetMemberSelection(ofFirst, pool, 1);
    for (int victim : {1, 0}) { // first the one that borrowed it, then the one it was made for
        pool.DeleteMember(pool.RemoveMemberByIndex(victim));
        pool.AddNewMember();
        pool.AddNewMember();
        for (int i = victim; i < pool.GetNumMembers(); ++i) {
            EXPECT_NE(selections->GetMemberSelection(pool, i), ofFirst);
        }
    }
    MemberSelection* const notShared = selections->GetMemberSelection(pool, 0);
    unsigned int const stamp = notShared->GetLastRecreationTimeStamp();
    *ofFirst = MemberSelection(&pool);
    ofFirst->AddMember(pool, pool.GetMemberByIndex(0));
    pool.InitializeMemberPool();
    EXPECT_GT(notShared->GetLastRecreationTimeStamp(), stamp) << "nobody takes a renewed selection for the old one";
    EXPECT_EQ(ofFirst->GetNumMembers(), 1) << "it was stored twice: somebody may refer to it still";
    pool.AddMemberProperty(selections);
    pool.SetMemberCount(2);
    EXPECT_NE(selections->GetMemberSelection(pool, 0), ofFirst);
    EXPECT_NE(selections->GetMemberSelection(pool, 1), ofFirst);
}

TEST(PoolData, AreANewSelectionForEachBuildThatOthersReferToTheFormerOneOf) {
    Pool pool;
    Pool other;
    RefCountPtr<MemberSelectionProperty> const selections(new MemberSelectionProperty("s"));
    RefCountPtr<MemberSelectionProperty> const ofMembers(new MemberSelectionProperty("t"));
    other.AddMemberProperty(ofMembers);
    other.SetMemberCount(1);
    for (bool const shared : {false, true}) {
        pool.InitializeMemberPool();
        pool.AddPoolProperty(selections);
        pool.CompileMemberPool();
        MemberSelection* const first = Datum::Read<MemberSelection*>(selections->GetPoolData());
        selections->SetMemberSelection(first, pool, 0); // as it is
        if (shared) {
            ofMembers->SetMemberSelection(first, other, 0);
        }
        *first = MemberSelection(other);
        pool.CompileMemberPool();
        EXPECT_EQ(Datum::Read<MemberSelection*>(selections->GetPoolData()) == first, !shared);
        EXPECT_EQ(first->GetNumMembers(), shared ? 1 : 0);
    }
}

TEST(NewMembers, KeepTheirInstancesWhenAnotherPoolTookTheProperty) {
    Pool pool;
    Pool other("Other");
    RefCountPtr<TextProperty> const text(new TextProperty("t"));
    pool.AddMemberProperty(text);
    Member const member = pool.CreateNewMember();
    other.AddMemberProperty(text);
    other.InitializeMemberPool();
    EXPECT_NE(Datum::Read<void*>(pool.CreateNewMember().record), Datum::Read<void*>(member.record));
}

TEST(DeletedMembers, AreDeletedOnceThoughTheirInstanceDeletesThemAgain) {
    Functor functor;
    Pool pool;
    functor.meddle = [&](Member member) { pool.DeleteMember(member); };
    pool.AddMemberProperty(new FixedSizeDataProperty("f", 8, &functor));
    pool.DeleteMember(pool.CreateNewMember());
    EXPECT_EQ(functor.alive, 0);

    pool.SetMemberCount(5);
    auto going = std::make_unique<std::vector<Member>>(pool.GetAllMembers());
    functor.meddle = [&](Member) { going.reset(); };
    pool.RemoveAndDeleteMembers(*going);
    EXPECT_EQ(functor.alive, 0) << "the host's vector goes with the first of them";
    EXPECT_TRUE(Validator::RecordsInUse(pool).empty());
}

TEST(SelectionProperties, WorkOnTheActiveMemberOrOnThePoolData) {
    MessageLog const log;
    Pool pool;
    RefCountPtr<MemberSelectionProperty> const ofMembers(new MemberSelectionProperty("m"));
    RefCountPtr<MemberSelectionProperty> const ofPool(new MemberSelectionProperty("p"));
    auto const poolSelection = [&] { return Datum::Read<MemberSelection*>(ofPool->GetPoolData()); };
    EXPECT_NE(Datum::Read<void*>(MemberSelectionProperty(std::as_const(*ofPool)).GetPoolData()), poolSelection());
    ofMembers->SetBasePoolID(pool.GetMemberPoolID());
    ofPool->SetBasePoolID(pool.GetMemberPoolID());
    pool.AddMemberProperty(ofMembers);
    pool.AddPoolProperty(ofPool);
    pool.SetBasePoolsForMemberSelections();
    MemberSelection const* const before = poolSelection();
    pool.CompileMemberPool();
    EXPECT_NE(poolSelection(), before);
    EXPECT_EQ(ofPool->GetBasePool(), &pool) << "the selection made at compile time takes the base pool over";
    MemberSelection given(nullptr);
    MemberSelectionProperty copy(std::as_const(*ofPool));
    EXPECT_EQ(copy.GetBasePool(), &pool);
    EXPECT_NE(Datum::Read<MemberSelection*>(copy.GetPoolData()), poolSelection());
    MemberSelection* const pointer = &given;
    copy.SetPoolData(const_cast<MemberSelection**>(&pointer));
    EXPECT_EQ(MemberSelectionProperty(std::as_const(copy)).GetBasePool(), nullptr) << "what the host gave is shared";
    pool.SetMemberCount(1);
    pool.ActivateFirstMember();
    for (auto const& property : {ofMembers, ofPool}) {
        property->AddMemberToSelection(pool, pool.ActiveMember());
        EXPECT_EQ(property->GetMemberSelection(pool, -1)->GetNumMembers(), 1);
        property->ClearSelection();
        EXPECT_EQ(property->GetMemberSelection(pool, -1)->GetNumMembers(), 0);
    }
    ofPool->SetBasePoolID(12345);
    ofPool->SetBasePoolFromID();
    EXPECT_EQ(log.Take().back(),
              "Error: MemberSelectionProperty 'p' could not set it's BasePool. Either it's not linked, or the link "
              "doesn't point to a MemberPool, or the MemberPool it points to is not yet loaded. In that case it will "
              "relink as sonn as the referenced Memberpool gets compiled");
    EXPECT_EQ(ofPool->GetBasePool(), &pool);
    MemberSelection* none = nullptr;
    ofPool->SetPoolData(&none);
    ofPool->SetBasePoolID(pool.GetMemberPoolID());
    ofPool->SetBasePoolFromID();
    ofPool->ClearSelection();
    EXPECT_EQ(ofPool->GetBasePool(), nullptr);
}

TEST(PoolProperties, GetFreshInstancesWhenTheirPoolIsCompiled) {
    Functor functor;
    Pool pool;
    RefCountPtr<TextProperty> const text(new TextProperty("t"));
    RefCountPtr<FixedSizeDataProperty> const block(new FixedSizeDataProperty("f", 3, &functor));
    text->SetPoolData(Source());
    pool.AddPoolProperty(text);
    pool.AddPoolProperty(block);
    pool.CompileMemberPool();
    EXPECT_EQ(LengthOf(text->GetData()), 0u);
    text->SetPoolData(Source());
    EXPECT_EQ(LengthOf(text->GetData()), 2u) << "writers and readers see one text";
    ASSERT_NE(block->GetPoolData(), nullptr);
    EXPECT_EQ(static_cast<unsigned char*>(block->GetPoolData())[0], 1);
    EXPECT_EQ(functor.lastSize, 3);
    pool.CompileMemberPool();
    EXPECT_EQ(LengthOf(text->GetData()), 0u);
}

} // namespace
