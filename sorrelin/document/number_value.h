// A number in an object's dictionary, direct or by reference.
#ifndef SORRELIN_DOCUMENT_NUMBER_VALUE_H_
#define SORRELIN_DOCUMENT_NUMBER_VALUE_H_

#include <sorrelin/document/loaded_object.h>
#include <sorrelin/frame/session_state.h>

namespace sorrelin {

// The number behind `key`, or in the object that a reference behind it names.
inline bool ReadNumber(sorrelin::SessionState& session, LoadedObject const& object, char const* key,
                       DWORD* value) {
  if (session.IsReference(object.data(), object.size(), key) == 0) {
    return session.GetValue(object.data(), object.size(), key, value) != 0;
  }
  DWORD number = 0;
  DWORD generation = 0;
  return session.GetValue(object.data(), object.size(), key, &number, &generation) != 0 &&
         session.GetValueFromReference(number, value) != 0;
}

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_NUMBER_VALUE_H_
