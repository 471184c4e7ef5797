#pragma once
// Marks the editor's boxes as being filled by the program, not typed into:
// the change handlers leave such changes alone.

#include "editor/EditorForm.h"

namespace ht
{

class LoadingGuard
{
  public:
    explicit LoadingGuard(EditorForm &form) : m_flag(form.m_loading), m_before(form.m_loading) { m_flag = true; }
    ~LoadingGuard() { m_flag = m_before; }
    LoadingGuard(const LoadingGuard &) = delete;
    LoadingGuard &operator=(const LoadingGuard &) = delete;

  private:
    bool &m_flag;
    bool m_before;
};

} // namespace ht
