// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include <array>
#include <cstring>
#include <utility>

namespace {

using namespace Gentra;
using namespace Support;
using Util::RefCountPtr;

constexpr int POINTER = sizeof(void*);

template<class T>
T Read(void const* datum) {
    return Datum::Read<T>(datum);
}

// Parameters.

TEST(Parameters, TakeTheirDefaultByType) {
    float numbers[] = {1.5f, 2.5f, 3.5f};
    Parameter const value(MEMBER, VALUE, "v", UNIQUE_INTRINSIC, numbers);
    EXPECT_EQ(value.value, 1.5f);
    EXPECT_EQ(value.owner, MEMBER);
    EXPECT_EQ(value.scope, UNIQUE_INTRINSIC);
    Parameter const vector(POOL, VECTOR, "v", VISIBLE, numbers);
    EXPECT_EQ(vector.vector.z, 3.5f);
    EXPECT_EQ(vector.value, 0.0f);
    EXPECT_EQ(Parameter(POOL, FIXEDSIZEDATA, "v", VISIBLE, numbers).defaultData, numbers);
    for (PropertyType const type : {UNDEFINED, MEMBERSELECTION, BEHAVIOUR, DATAREFERENCE, TEXT}) {
        Parameter const ignoring(POOL, type, "v", VISIBLE, numbers);
        EXPECT_EQ(ignoring.value, 0.0f);
        EXPECT_EQ(ignoring.defaultData, nullptr);
    }
    EXPECT_EQ(Parameter(POOL, VECTOR, "v", VISIBLE, nullptr).vector.x, 0.0f);
}

/// All fields in one comparable text.
std::string Describe(Parameter const& p) {
    return std::string(p.name) + " type " + std::to_string(p.type) + " owner " + std::to_string(p.owner) + " scope " +
           std::to_string(p.scope) + " value " + std::to_string(static_cast<int>(p.value)) + " x " +
           std::to_string(static_cast<int>(p.vector.x)) + " offset " + std::to_string(p.dataOffset) + " index " +
           std::to_string(p.linkIndex);
}

TEST(Parameters, AreMadeFieldByField) {
    struct Row {
        void (*make)(Parameter&);
        char const* expected;
    };
    using P = Parameter;
    for (Row const& row :
         {Row{[](P& p) { p.MakeMemberInputParameter(VECTOR, "new", 8); },
              "type 2 owner 1 scope 2 value 5 x 6 offset 8"},
          Row{[](P& p) { p.MakeConstantValueInputParameter("new", 1); }, "type 1 owner 1 scope 2 value 1 x 6 offset 7"},
          Row{[](P& p) { p.MakeConstantVectorInputParameter("new", Math::Vec3(1, 0, 0)); },
              "type 2 owner 1 scope 2 value 5 x 1 offset 7"},
          Row{[](P& p) { p.MakeBehaviourParameter("new"); }, "type 4 owner 0 scope 2 value 5 x 6 offset 7"},
          Row{[](P& p) { p.MakePropertyCreationParameter(TEXT, "new", true); },
              "type 7 owner 1 scope 1 value 5 x 6 offset 7"},
          Row{[](P& p) { p.MakePropertyCreationParameter(TEXT, "new", false); },
              "type 7 owner 1 scope 0 value 5 x 6 offset 7"},
          Row{[](P& p) { p.MakeBehaviourInterfaceParameter(FLEXIBLE, VALUE, "new", VISIBLE); },
              "type 1 owner 2 scope 0 value 0 x 0 offset 7"},
          Row{[](P& p) { p.MakeInputParameter(VECTOR, "new", 1, Math::Vec3(2, 0, 0), 3); },
              "type 2 owner 1 scope 2 value 1 x 2 offset 3"}}) {
        Parameter parameter(MEMBER, DATAREFERENCE, "old", UNIQUE_INTRINSIC, nullptr);
        parameter.value = 5;
        parameter.vector.x = 6;
        parameter.dataOffset = 7;
        parameter.linkIndex = 9;
        row.make(parameter);
        EXPECT_EQ(Describe(parameter), std::string("new ") + row.expected + " index 9");
    }
}

// The property classes.

PropertyPtr Make(PropertyType type) {
    switch (type) {
    case VALUE:
        return new ValueProperty;
    case VECTOR:
        return new VectorProperty;
    case MEMBERSELECTION:
        return new MemberSelectionProperty;
    case BEHAVIOUR:
        return new BehaviourProperty;
    case DATAREFERENCE:
        return new DataReferenceProperty;
    case FIXEDSIZEDATA:
        return new FixedSizeDataProperty(16, nullptr);
    case TEXT:
        return new TextProperty;
    default:
        return new Property;
    }
}

TEST(Properties, StartInNoPoolUnderTheirDefaultName) {
    struct Row {
        PropertyType type;
        int size;
        char const* name;
    };
    for (Row const& row :
         {Row{UNDEFINED, 0, "None"}, Row{VALUE, 4, "Value Property"}, Row{VECTOR, 12, "Vector Property"},
          Row{MEMBERSELECTION, POINTER, "MemberSelection Property"}, Row{BEHAVIOUR, POINTER, "Behaviour Property"},
          Row{DATAREFERENCE, POINTER, "DataReference Property"}, Row{FIXEDSIZEDATA, 16, "FixedSizeData Property"},
          Row{TEXT, POINTER, "Text Property"}}) {
        PropertyPtr const property = Make(row.type);
        EXPECT_EQ(property->GetPropertyType(), row.type);
        EXPECT_EQ(property->GetDataSize(), row.size) << row.name;
        EXPECT_EQ(property->GetName(), row.name);
        EXPECT_EQ(property->GetPropertyOwner(), FLEXIBLE);
        EXPECT_EQ(property->GetOwnerPool(), nullptr);
        EXPECT_EQ(property->property, property.Get());
        EXPECT_EQ(property->GetDataOffset(), -1);
        EXPECT_TRUE(property->ContainsValidData());
        EXPECT_EQ(property->GetData(), property->GetPoolData());
        EXPECT_NE(property->GetPropertyID(), Make(row.type)->GetPropertyID());
    }
    EXPECT_EQ(Property::NIL->GetName(), "NULL");
    EXPECT_EQ(Property::EVENT.name, "Property");
    EXPECT_NE(MemberSelectionProperty::NIL.Get(), nullptr);
    std::string const name = "named";
    EXPECT_EQ(ValueProperty(name).GetName(), "named");
    EXPECT_EQ(FixedSizeDataProperty("named", 8, nullptr).GetDataSize(), 8);
}

TEST(Properties, KeepTheirPoolData) {
    float number = 2.5f;
    ValueProperty value;
    value.SetData(&number);
    EXPECT_EQ(Read<float>(value.GetData()), 2.5f);
    VectorProperty vector;
    Math::Vec3 position(1, 2, 3);
    vector.SetPoolData(&position);
    EXPECT_EQ(vector.GetVector().z, 3.0f);

    FixedSizeDataProperty block(16, nullptr);
    EXPECT_EQ(block.GetPoolData(), nullptr);
    std::array<unsigned char, 16> bytes{1, 2, 3};
    block.SetPoolData(bytes.data());
    void const* const first = block.GetPoolData();
    EXPECT_EQ(std::memcmp(first, bytes.data(), 16), 0);
    bytes[0] = 9;
    block.SetPoolData(bytes.data());
    EXPECT_EQ(block.GetPoolData(), first);
    EXPECT_EQ(static_cast<unsigned char const*>(first)[0], 9);
    FixedSizeDataProperty const copy(block);
    EXPECT_NE(const_cast<FixedSizeDataProperty&>(copy).GetPoolData(), first);

    unsigned short const letters[] = {'h', 'i', 0};
    unsigned short const* source = letters;
    TextProperty text;
    text.SetPoolData(&source);
    EXPECT_EQ(TextProperty::GetCharStringFromPropertyData(text.GetData())[1], 'i');
    TextProperty const textCopy(text);
    text.SetStringToPropertyData(text.GetPoolData(), letters + 1);
    EXPECT_EQ(TextProperty::GetStringFromPropertyData(const_cast<TextProperty&>(textCopy).GetPoolData())->size(), 2u);
    EXPECT_EQ(text.GetText(), text.GetData());
    EXPECT_EQ(TextProperty::GetCharStringFromPropertyData(nullptr), nullptr);
    TextProperty::SetStringToPropertyData(text.GetPoolData(), nullptr);

    for (PropertyType const type :
         {UNDEFINED, VALUE, VECTOR, MEMBERSELECTION, BEHAVIOUR, DATAREFERENCE, FIXEDSIZEDATA, TEXT}) {
        PropertyPtr const property = Make(type);
        property->SetPoolData(nullptr);
        property->OnInstanceCreation(nullptr);
        property->OnInstanceDeletion(nullptr);
        property->Update();
    }
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
    EXPECT_EQ(value->GetData(), value->GetDataFromMemberSelection(pool, 1));
    float number = 9;
    value->SetData(&number);
    value->SetDataToMemberSelection(&number, pool, 5);
    value->SetDataToMemberSelection(nullptr, pool, 0);
    EXPECT_EQ(Read<float>(value->GetDataFromMemberSelection(pool, 1)), 9.0f);
    EXPECT_EQ(Read<float>(value->GetDataFromMemberSelection(pool, 0)), 7.0f);
    EXPECT_EQ(value->value, 7.0f) << "the default for new members stays";
}

TEST(Properties, NeverReachBehindARecord) {
    Pool pool;
    auto const first = Vector("first");
    auto const second = Vector("second");
    pool.AddMemberProperty(first);
    pool.AddMemberProperty(second);
    VectorProperty const copy(*second);
    Pool small("Small");
    small.AddMemberProperty(Value("v"));
    small.SetMemberCount(1);
    EXPECT_EQ(second->GetDataFromMemberSelection(small, 0), nullptr) << "another pool's members";
    pool.InitializeMemberPool();
    pool.AddMemberProperty(Value("v"));
    pool.SetMemberCount(1);
    pool.ActivateFirstMember();
    EXPECT_EQ(second->GetOwnerPool(), nullptr);
    EXPECT_EQ(second->GetData(), second->GetPoolData()) << "in no pool any more";
    EXPECT_EQ(const_cast<VectorProperty&>(copy).GetData(), nullptr) << "of an earlier layout";
}

TEST(Properties, AreFoundByIntrinsicName) {
    std::vector<PropertyPtr> properties{Value("wanted"), Value("other"), Value("wanted")};
    EXPECT_TRUE(Property::GetIntrinsicPropertyFromName(properties, "wanted") == Property::NIL);
    properties[2]->scope = SHARED_INTRINSIC;
    EXPECT_TRUE(Property::GetIntrinsicPropertyFromName(properties, "wanted") == properties[2]);
    EXPECT_TRUE(Property::GetIntrinsicPropertyFromName({}, "wanted") == Property::NIL);
}

TEST(Properties, AreMadeFromParameters) {
    Parameter parameter(MEMBER, VECTOR, "made", UNIQUE_INTRINSIC, nullptr);
    parameter.vector = {1, 2, 3};
    parameter.linkIndex = 4;
    for (PropertyType const type : {VALUE, VECTOR, MEMBERSELECTION, DATAREFERENCE, TEXT}) {
        parameter.type = type;
        PropertyPtr const made = PropertyFactory::CreateProperty(parameter);
        EXPECT_EQ(made->GetPropertyType(), type);
        EXPECT_EQ(made->property, made.Get());
        EXPECT_EQ(made->GetName(), "made");
        EXPECT_EQ(made->GetPropertyOwner(), MEMBER);
        EXPECT_EQ(made->GetLinkIndex(), 4);
        EXPECT_EQ(made->vector.y, 2.0f);
    }
    parameter.type = FIXEDSIZEDATA;
    parameter.fixedSize = 24;
    EXPECT_EQ(PropertyFactory::CreateProperty(parameter)->GetDataSize(), 24);
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
    void DeleteInstance(unsigned char*, int) override { --alive; }
    int alive = 0;
    int lastSize = 0;
};

TEST(NewMembers, ReceiveEachPropertysDefaultAndInstance) {
    Functor functor;
    Pool pool;
    Pool base("Base");
    RefCountPtr<MemberSelectionProperty> const selections(new MemberSelectionProperty("s"));
    RefCountPtr<TextProperty> const text(new TextProperty("t"));
    RefCountPtr<FixedSizeDataProperty> const block(new FixedSizeDataProperty("f", 5, &functor));
    RefCountPtr<DataReferenceProperty> const reference(new DataReferenceProperty("d", &functor));
    unsigned short const letters[] = {'x', 0};
    unsigned short const* source = letters;
    text->SetPoolData(&source);
    selections->SetBasePoolID(base.GetMemberPoolID());
    selections->SetBasePoolFromID();
    for (PropertyPtr const& property :
         {PropertyPtr(block), PropertyPtr(selections), PropertyPtr(text), PropertyPtr(reference)}) {
        pool.AddMemberProperty(property);
    }
    pool.SetMemberCount(2);
    EXPECT_EQ(functor.alive, 4);
    EXPECT_EQ(functor.lastSize, POINTER);
    auto const* const bytes = static_cast<unsigned char const*>(block->GetDataFromMemberSelection(pool, 0));
    EXPECT_EQ(std::vector<int>(bytes, bytes + 5), (std::vector<int>{1, 0, 0, 0, 0})) << "zero bytes, then the functor";
    EXPECT_EQ(TextProperty::GetStringFromPropertyData(text->GetDataFromMemberSelection(pool, 0))->size(), 0u);
    text->SetDataToMemberSelection(&source, pool, 1);
    EXPECT_EQ(TextProperty::GetCharStringFromPropertyData(text->GetDataFromMemberSelection(pool, 1))[0], 'x');
    MemberSelection* const first = selections->GetMemberSelection(pool, 0);
    MemberSelection* const second = selections->GetMemberSelection(pool, 1);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->GetBasePool(), &base);
    EXPECT_EQ(selections->GetMemberSelection(pool, 2), nullptr);

    Member const victim = pool.RemoveMemberByIndex(0);
    pool.DeleteMember(victim);
    EXPECT_EQ(functor.alive, 2);
    EXPECT_EQ(first->GetNumMembers(), 0) << "somebody may still hold it";
    pool.AddNewMember();
    EXPECT_EQ(pool.GetMemberByIndex(1), victim);
    EXPECT_EQ(selections->GetMemberSelection(pool, 1), first) << "taken back and given out again";
    pool.InitializeMemberPool();
    EXPECT_EQ(functor.alive, 4) << "clearing a pool deletes no instances";
    EXPECT_EQ(second->GetBasePool(), nullptr);
}

TEST(NewMembers, NeverShareASelectionThatAnotherMemberStillHas) {
    Pool pool;
    RefCountPtr<MemberSelectionProperty> const selections(new MemberSelectionProperty("s"));
    pool.AddMemberProperty(selections);
    pool.SetMemberCount(2);
    MemberSelection* const ofFirst = selections->GetMemberSelection(pool, 0);
    selections->SetMemberSelection(ofFirst, pool, 1);
    ofFirst->AddMember(pool, Member());
    for (int victim : {1, 0}) { // first the one that borrowed it, then the one it was made for
        pool.DeleteMember(pool.RemoveMemberByIndex(victim));
        pool.AddNewMember();
        pool.AddNewMember();
        for (int i = victim == 1 ? 1 : 0; i < pool.GetNumMembers(); ++i) {
            EXPECT_NE(selections->GetMemberSelection(pool, i), ofFirst);
        }
    }
    unsigned int const stamp = ofFirst->GetLastRecreationTimeStamp();
    pool.InitializeMemberPool();
    EXPECT_GT(ofFirst->GetLastRecreationTimeStamp(), stamp) << "nobody takes a renewed selection for the old one";
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
    struct Suicidal : InstanceCreationFunctor {
        void CreateInstance(unsigned char*, int) override {}
        void DeleteInstance(unsigned char* datum, int) override {
            ++deletions;
            pool->DeleteMember(Member(datum));
            if (clearing) {
                pool->InitializeMemberPool();
            }
        }
        Pool* pool = nullptr;
        int deletions = 0;
        bool clearing = false;
    } functor;
    Pool pool;
    functor.pool = &pool;
    for (bool const clearing : {false, true}) {
        functor.clearing = clearing;
        pool.AddMemberProperty(new FixedSizeDataProperty("f", 8, &functor));
        pool.DeleteMember(pool.CreateNewMember());
        EXPECT_EQ(std::exchange(functor.deletions, 0), 1);
        EXPECT_EQ(pool.GetAllProperties().empty(), clearing);
        pool.InitializeMemberPool();
    }
}

TEST(NewMembers, GoAgainWhenTheHostsInstanceThrows) {
    struct Throwing : InstanceCreationFunctor {
        void CreateInstance(unsigned char*, int) override { throw 1; }
        void DeleteInstance(unsigned char*, int) override {}
    } functor;
    Pool pool;
    RefCountPtr<FixedSizeDataProperty> const block(new FixedSizeDataProperty("f", 8, &functor));
    pool.AddMemberProperty(block);
    EXPECT_THROW(pool.AddNewMember(), int);
    EXPECT_EQ(pool.GetNumMembers(), 0);
    block->Init("f", 8, nullptr);
    EXPECT_TRUE(pool.CreateNewMember().IsValid());
}

TEST(SelectionProperties, WorkOnTheActiveMemberOrOnThePoolData) {
    MessageLog const log;
    Pool pool;
    RefCountPtr<MemberSelectionProperty> const ofMembers(new MemberSelectionProperty("m"));
    RefCountPtr<MemberSelectionProperty> const ofPool(new MemberSelectionProperty("p"));
    for (auto const& property : {ofMembers, ofPool}) {
        property->SetBasePoolID(pool.GetMemberPoolID());
    }
    pool.AddMemberProperty(ofMembers);
    pool.AddPoolProperty(ofPool);
    pool.SetBasePoolsForMemberSelections();
    pool.CompileMemberPool();
    EXPECT_EQ(ofPool->GetBasePool(), &pool) << "the selection made at compile time takes the base pool over";
    pool.SetMemberCount(1);
    Member const member = pool.GetMemberByIndex(0);
    pool.ActivateFirstMember();
    for (auto const& property : {ofMembers, ofPool}) {
        property->AddMemberToSelection(pool, member);
        EXPECT_EQ(property->GetMemberSelection(pool, -1)->GetNumMembers(), 1);
        property->ClearSelection();
        EXPECT_EQ(property->GetMemberSelection(pool, -1)->GetNumMembers(), 0);
    }
    ofPool->SetBasePoolID(12345);
    ofPool->SetBasePoolFromID();
    EXPECT_EQ(log.Take().back(),
              "Error: MemberSelectionProperty 'p' could not set it's BasePool. Either it's not linked, or the link "
              "doesn't point to a MemberPool, or the MemberPool it points to is not yet loaded. In that case it "
              "will "
              "relink as sonn as the referenced Memberpool gets compiled");
    EXPECT_EQ(ofPool->GetBasePool(), &pool);
    MemberSelection* none = nullptr;
    ofPool->SetPoolData(&none);
    ofPool->SetBasePoolFromID();
    ofPool->ClearSelection();
    EXPECT_EQ(ofPool->GetBasePool(), nullptr);
    MemberSelectionProperty const copy(*ofPool);
    EXPECT_EQ(copy.GetName(), "p");
}

TEST(PoolProperties, GetFreshInstancesWhenTheirPoolIsCompiled) {
    Functor functor;
    Pool pool;
    RefCountPtr<TextProperty> const text(new TextProperty("t"));
    RefCountPtr<FixedSizeDataProperty> const block(new FixedSizeDataProperty("f", 3, &functor));
    unsigned short const letters[] = {'x', 0};
    unsigned short const* source = letters;
    text->SetPoolData(&source);
    pool.AddPoolProperty(text);
    pool.AddPoolProperty(block);
    pool.CompileMemberPool();
    EXPECT_EQ(TextProperty::GetStringFromPropertyData(text->GetData())->size(), 0u);
    text->SetPoolData(&source);
    EXPECT_EQ(TextProperty::GetStringFromPropertyData(text->GetData())->size(), 1u)
        << "writers and readers see one text";
    ASSERT_NE(block->GetPoolData(), nullptr);
    EXPECT_EQ(static_cast<unsigned char*>(block->GetPoolData())[0], 1);
    EXPECT_EQ(functor.lastSize, 3);
}

} // namespace
