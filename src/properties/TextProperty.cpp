// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/TextProperty.h"

#include "InstanceStore.h"

#include "gentra/properties/Datum.h"
#include "gentra/properties/MemberSelection.h"

namespace Gentra {

TextProperty::TextProperty() : TextProperty("Text Property") {}

TextProperty::TextProperty(char const* newName) : TextProperty(Util::String(newName)) {}

TextProperty::TextProperty(std::string const& newName)
    : poolText(std::make_unique<Text>()), instances(std::make_unique<InstanceStore<Text>>()) {
    takeBackInstances = &TakeBackInstances;
    Init(newName);
}

TextProperty::TextProperty(TextProperty const& other)
    : Property(other), poolText(std::make_unique<Text>()), instances(std::make_unique<InstanceStore<Text>>()) {
    takeBackInstances = &TakeBackInstances;
    *this = other;
}

TextProperty& TextProperty::operator=(TextProperty const& other) {
    if (this == &other) {
        return *this;
    }
    Property::operator=(other);
    *poolText = *other.poolDatum;
    poolDatum = poolText.get();
    return *this;
}

TextProperty::~TextProperty() = default;

void TextProperty::Init(std::string const& newName) {
    name = newName;
    type = TEXT;
    poolDatum = poolText.get();
}

void TextProperty::SetDataToMemberSelection(void* data, MemberSelection& selection, int index) {
    if (owner != MEMBER) {
        SetPoolData(data);
    } else if (data != nullptr) {
        SetStringToPropertyData(GetDataFromMemberSelection(selection, index), Datum::Read<unsigned short const*>(data));
    }
}

void* TextProperty::GetPoolData() {
    return &poolDatum;
}

void TextProperty::SetPoolData(void* data) {
    if (data != nullptr) {
        SetStringToPropertyData(&poolDatum, Datum::Read<unsigned short const*>(data));
    }
}

void TextProperty::OnInstanceCreation(unsigned char* datum) {
    if (datum == nullptr) {
        return;
    }
    if (datum != reinterpret_cast<unsigned char*>(&poolDatum)) {
        Datum::Write(datum, instances->Take(datum, [] { return std::make_unique<Text>(); }));
        return;
    }
    // Once per build of the pool: the same object serves each time, so that nobody's pointer dangles.
    if (poolInstance == nullptr) {
        poolInstance = std::make_unique<Text>();
    }
    poolInstance->clear();
    poolDatum = poolInstance.get();
}

void TextProperty::OnInstanceDeletion(unsigned char* datum) {
    Text* const text = GetStringFromPropertyData(datum);
    if (instances->WasMadeFor(text, datum)) {
        instances->GiveBack(text, [](Text& each) { each.clear(); });
    }
}

void TextProperty::TakeBackInstances(Property& property) {
    static_cast<TextProperty&>(property).instances->GiveBackAll([](Text& text) { text.clear(); },
                                                                [](Text const&) { return false; });
}

int TextProperty::GetDataSize() const {
    return sizeof(Text*);
}

PropertyType TextProperty::GetPropertyType() {
    return TEXT;
}

unsigned short* TextProperty::GetText() {
    return static_cast<unsigned short*>(const_cast<void*>(GetData()));
}

TextProperty::Text* TextProperty::GetStringFromPropertyData(void const* datum) {
    return datum != nullptr ? Datum::Read<Text*>(datum) : nullptr;
}

unsigned short const* TextProperty::GetCharStringFromPropertyData(void const* datum) {
    Text const* const text = GetStringFromPropertyData(datum);
    return text != nullptr ? text->c_str() : nullptr;
}

void TextProperty::SetStringToPropertyData(void const* datum, unsigned short const* text) {
    Text* const string = GetStringFromPropertyData(datum);
    if (string != nullptr && text != nullptr) {
        string->assign(text);
    }
}

} // namespace Gentra
