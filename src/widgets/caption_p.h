// How messages name a field and its unit: the words the user sees on the form. Not installed.
#pragma once

#include <QString>

class QWidget;

namespace qxnum {

class TCustomNumEdit;

// The field's caption: a numeric input's name label when the host gave it a caption of its own,
// else the text of a label that has the field as buddy (the label of a QFormLayout row), else a
// group box's title or a button's text, else the object name. Mnemonics, markup and a trailing
// colon are left out.
QString FieldCaption(const QWidget* Field);

// The unit of an edit's display value for messages, without brackets ("bar", "%"): the custom
// unit text of a numeric input, else the unit table's text of its parameter type; empty for no
// unit or the dimensionless "-".
QString MessageUnit(const TCustomNumEdit* Edit);

} // namespace qxnum
