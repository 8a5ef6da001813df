#ifndef NU_FOUNDATION_INTERNAL_ARRAY_DEFINITIONS_H
#define NU_FOUNDATION_INTERNAL_ARRAY_DEFINITIONS_H

#include "nu/foundation/internal/array_rules.h"

// The definitions of the members that all array classes share. They are macros over ArrayRules because each class is
// declared and exported on its own, without a base class: a template cannot define the members of another class.
// `texts` is the constant ArrayTexts of the class, visible where the macro stands.
#define NU_DEFINE_ARRAY(Class, Element, Argument, texts)                                                    \
  nu::internal::ArrayFields<Element> Class::Fields() {                                                      \
    return {m_data, m_size, m_capacity, m_expandSize, m_reserved};                                          \
  }                                                                                                         \
  Class::Class(int capacity) : Class(capacity, nu::internal::kDefaultExpandSize) {}                         \
  Class::Class(int capacity, int expandSize) {                                                              \
    nu::internal::ArrayRules<Element>::Construct(Fields(), capacity, expandSize, texts);                    \
  }                                                                                                         \
  Class::Class(const Class& other) {                                                                        \
    nu::internal::ArrayRules<Element>::Copy(Fields(), other.m_data, other.m_size, other.m_capacity,         \
                                            other.m_expandSize, texts);                                     \
  }                                                                                                         \
  Class::Class(Class&& other) noexcept {                                                                    \
    nu::internal::ArrayRules<Element>::Take(Fields(), other.Fields());                                      \
  }                                                                                                         \
  Class& Class::operator=(const Class& other) {                                                             \
    if (this != &other) {                                                                                   \
      nu::internal::ArrayRules<Element>::Copy(Fields(), other.m_data, other.m_size, other.m_capacity,       \
                                              other.m_expandSize, texts);                                   \
    }                                                                                                       \
    return *this;                                                                                           \
  }                                                                                                         \
  Class& Class::operator=(Class&& other) noexcept {                                                         \
    if (this != &other) nu::internal::ArrayRules<Element>::Move(Fields(), other.Fields(), texts);           \
    return *this;                                                                                           \
  }                                                                                                         \
  Class::~Class() {                                                                                         \
    nu::internal::ArrayRules<Element>::Destroy(Fields());                                                   \
  }                                                                                                         \
  void Class::SetCapacity(int capacity) {                                                                   \
    nu::internal::ArrayRules<Element>::SetCapacity(Fields(), capacity, texts);                              \
  }                                                                                                         \
  void Class::SetSize(int capacity) {                                                                       \
    SetCapacity(capacity);                                                                                  \
  }                                                                                                         \
  void Class::SetExpandSize(int expandSize) {                                                               \
    nu::internal::ArrayRules<Element>::SetExpandSize(Fields(), expandSize, texts);                          \
  }                                                                                                         \
  void Class::FailIndex(int i) const {                                                                      \
    nu::internal::ArrayRules<Element>::RequireElement(i, m_size, "element operator[]", (texts).className);  \
    nu::internal::FailOperation(NuOperationIndex, "element operator[]", (texts).className, 0, m_size - 1);  \
  }                                                                                                         \
  Element Class::First() const {                                                                            \
    if (m_size == 0) nu::internal::FailOperation(NuOperationEmpty, "First operator[]", (texts).first);      \
    return m_data[0];                                                                                       \
  }                                                                                                         \
  Element Class::Last() const {                                                                             \
    if (m_size == 0) nu::internal::FailOperation(NuOperationEmpty, "Last operator[]", (texts).last);        \
    return m_data[m_size - 1];                                                                              \
  }                                                                                                         \
  void Class::Add(Argument value) {                                                                         \
    if (m_size < m_capacity) {                                                                              \
      m_data[m_size++] = value;                                                                             \
      return;                                                                                               \
    }                                                                                                       \
    Element const kept = value; /* it may be an element of this array, whose storage is about to move */    \
    nu::internal::ArrayRules<Element>::Grow(Fields(), texts);                                               \
    m_data[m_size++] = kept;                                                                                \
  }                                                                                                         \
  void Class::Append(const Class& other) {                                                                  \
    nu::internal::ArrayRules<Element>::Append(Fields(), other.m_data, other.m_size, this == &other, texts); \
  }                                                                                                         \
  void Class::Truncate(int size) {                                                                          \
    nu::internal::ArrayRules<Element>::Truncate(Fields(), size, texts);                                     \
  }                                                                                                         \
  void Class::FreeExtra() {                                                                                 \
    nu::internal::ArrayRules<Element>::FreeExtra(Fields(), texts);                                          \
  }

// Remove and SubArray(i, j), which all arrays but that of pointers have.
#define NU_DEFINE_ARRAY_PARTS(Class, Element, texts)                      \
  void Class::Remove(int i) {                                             \
    nu::internal::ArrayRules<Element>::Remove(Fields(), i, texts);        \
  }                                                                       \
  Class Class::SubArray(int i, int j) const {                             \
    nu::internal::ArrayRules<Element>::RequireRange(i, j, m_size, texts); \
    Class result(j - i + 1, m_expandSize);                                \
    std::copy(m_data + i, m_data + j + 1, result.m_data);                 \
    result.m_size = j - i + 1;                                            \
    return result;                                                        \
  }

// SubArray(mask): the room is the sum of the mask, which is meant to hold 0 and 1.
#define NU_DEFINE_ARRAY_MASK(Class, texts)                                       \
  Class Class::SubArray(const CNuIntArray& mask) const {                         \
    if (mask.GetSize() != m_size) {                                              \
      nu::internal::FailOperation(NuOperationSizeMismatch, "SubArray operation", \
                                  #Class "::SubArray(const CNuIntArray& ip)");   \
    }                                                                            \
    Class result(mask.Sum());                                                    \
    for (int i = 0; i < m_size; ++i) {                                           \
      if (mask[i] != 0) result.Add(m_data[i]);                                   \
    }                                                                            \
    return result;                                                               \
  }

#endif
