#include "JniEntity.h"

#include <utility>

JniEntity::~JniEntity()
{
    if (ref_) env_->DeleteLocalRef(ref_);
}

JniEntity::JniEntity(JniEntity&& other) noexcept
    : env_(other.env_), ref_(std::exchange(other.ref_, nullptr))
{
}
