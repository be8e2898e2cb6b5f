// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_TEXTPROPERTY_H
#define GENTRA_PROPERTIES_TEXTPROPERTY_H

#include "gentra/properties/Property.h"

#include <memory>
#include <string>

namespace Gentra {

template<class T>
class InstanceStore;

/// A property whose datum is a pointer to a string of 16-bit characters.
///
/// The property owns the strings: the pool text, and an empty one for each new member. A member's string is
/// taken back (emptied, for a later member) when the member is deleted while its datum still holds it, and
/// all of them when the property leaves its pool. Their memory lasts as long as the property.
class GENTRA_EXPORT TextProperty : public Property {
public:
    /// 16-bit code units; the library does not look at their encoding.
    using Text = std::basic_string<unsigned short>;

    /// Named "Text Property", with an empty pool text.
    TextProperty();
    /// @{
    /// As Init() makes it. A null `newName` gives the empty name.
    explicit TextProperty(std::string const& newName);
    explicit TextProperty(char const* newName);
    /// @}
    /// @{
    /// Copies the pool text. The strings of members stay with the property that made them.
    TextProperty(TextProperty const& other);
    TextProperty& operator=(TextProperty const& other);
    /// @}
    ~TextProperty();

    /// Sets the name and the type and points the pool data at the pool text.
    void Init(std::string const& newName);

    /// `data` is the address of a pointer to zero-terminated 16-bit characters, as in SetPoolData().
    void SetDataToMemberSelection(void* data, MemberSelection& selection, int index) override;
    /// The address of the pointer to the text.
    void* GetPoolData() override;
    /// Assigns the zero-terminated 16-bit characters whose address is stored at `data` to the text that the
    /// pool data points at.
    void SetPoolData(void* data) override;
    void OnInstanceCreation(unsigned char* datum) override;
    void OnInstanceDeletion(unsigned char* datum) override;
    int GetDataSize() const override;
    PropertyType GetPropertyType() override;

    /// The address of the datum, as GetData(). For the characters use
    /// GetCharStringFromPropertyData(GetData()).
    [[nodiscard]] unsigned short* GetText();

    /// The string that a datum, as GetData() and its kind give it, points at. It stays the property's. Null for a
    /// null `datum`.
    [[nodiscard]] static Text* GetStringFromPropertyData(void const* datum);
    /// Its characters, zero-terminated; null likewise.
    [[nodiscard]] static unsigned short const* GetCharStringFromPropertyData(void const* datum);
    /// Assigns zero-terminated characters; a null `datum` or `text` is ignored.
    static void SetStringToPropertyData(void const* datum, unsigned short const* text);

private:
    static void TakeBackInstances(Property& property);

    Text* poolDatum = nullptr; ///< One of the two below.
    std::unique_ptr<Text> poolText;
    std::unique_ptr<Text> poolInstance;             ///< Created when the pool that owns the property is compiled.
    std::unique_ptr<InstanceStore<Text>> instances; ///< Those of the members.
};

} // namespace Gentra

#endif
