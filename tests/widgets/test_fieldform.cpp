#include <gtest/gtest.h>
TEST(FieldForm, Placeholder) {}
