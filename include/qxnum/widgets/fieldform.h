/// \file
/// Field forms: the base dialog of a host's input forms. It finds every field on itself (every
/// component that supports INumFld, and the fields of its frames) and saves, restores, compares and
/// resets them as a whole, in both file media, tolerating files written by older or newer versions
/// of the form.
///
/// A host derives, builds its fields in its constructor and calls exec():
///
///     class TEngineForm : public qxnum::TFieldForm {
///     public:
///         explicit TEngineForm(QWidget* Parent = nullptr) : TFieldForm(Parent) {
///             setObjectName("EngineForm");             // IDstr: the name in every message
///             EndCode = qxnum::FieldFormEndCode;       // recovery stops at the written marker
///             auto* Power = new qxnum::TNumFld(ClientArea());
///             Power->setObjectName("Power");           // the name in streams and XML
///             ...
///             FormCreate();                            // creation values: see below
///         }
///     };
///
/// Components and names: the components of the form are its QObject descendants in depth-first
/// child order (ComponentsOf); a TFieldFrame is one component whose own fields are reached through
/// it. A component's Name is its objectName(). The class name in files is the Qt class name without
/// its namespace ("TNumFld"), which is also the name the class is registered under.
///
/// Life cycle, mapped onto QDialog:
/// - Creation values: FormCreate() takes them. A derived form calls it at the end of its
///   constructor, once its fields exist. A form that does not is caught up the first time it is
///   used: the first read, write, copy, reset, Assign or show calls FormCreate() first. Fields
///   added after that have no creation values of their own (ResetToCreateFormState gives them
///   their class's empty value).
/// - Copy values: FormShow() on every show (not on a spontaneous one such as leaving the
///   minimised state).
/// - OK (button, Enter on the default button): OKbtnClick. When the focus is in a TNumFld, its
///   pending text is evaluated as on leaving it; a refused text keeps the dialog open on the field
///   and confirms nothing. Otherwise the dialog closes with mrOk and every field's OkChanges runs.
/// - Cancel (button, Escape, the window's close button, reject()): every field's RestoreCopyValue.
/// - Any other done(code) leaves the fields alone.
/// The three buttons take the focus from the keyboard only (Qt::TabFocus): a click on OK leaves the
/// focus in the field being edited, so that its text is evaluated once, by OKbtnClick, and a click
/// on Cancel or Help evaluates nothing.
///
/// Reading streams: EndCode starts all zero, so the recovery skip after an unrecoverable record
/// ends after one byte (the classic behaviour). A form that wants recovery to stop after its end
/// marker sets EndCode to FieldFormEndCode. Errors of the filer outside a field's record (a
/// truncated or foreign stream) end the read like a field's error: rrcStreamError, the message
/// "Error reading FieldForm <IDstr>" with the filer's reason, and the skip unless the stream has
/// ended. Nothing is thrown to the caller.
///
/// Reading XML: a field whose element holds text of the wrong type keeps its value (fields read
/// all-or-nothing); the read goes on, sets rrcXmlError and shows one message naming the field.
///
/// Finding fields: a stream record names its field by object name, an XML element by ID string
/// (GetIDstring: for a TNumFld without CustomIDstring its label caption). Like the original, a
/// read looks a field up by object name; unlike it, when that fails it also looks for a field
/// whose ID string is the one stored (deliberate deviation 6), so a TNumFld whose caption
/// differs from its object name reads back its own XML, and a field whose CustomIDstring keeps
/// an old name is found in old streams too. FindNumFld does the same.
/// Renamed fields: AddFieldAlias("Power", "PWshaft") lets an element or record stored under the
/// old ID fill the field the new ID names, in both media (also part of deviation 6). In XML the
/// old element is then removed like stale data (VersionUpdated), so saving writes the new ID; an
/// alias is not used when the file holds an element of the new ID as well.
///
/// Messages about old files: an XML read shows one message. With one problem it is the classic
/// message of that problem; with more, the first problem's message lists the other fields it
/// could not carry over and the values carried over through aliases, each by its caption, before
/// the closing text. A read that only carried values over says so in a message of its own, as
/// does a stream read that carried values over (besides the classic messages).
///
/// Messages go through MessageDlg (warnings with OK); Help through ShowHelp (dialogs.h).
#pragma once

#include <qxnum/enums.h>
#include <qxnum/streamcode.h>
#include <qxnum/widgets/fieldbase.h>

#include <QDialog>
#include <QFrame>
#include <QStringList>

#include <memory>

class QLineEdit;
class QPushButton;

namespace qxnum {

class TFieldFramePrivate;
class TFieldFormPrivate;

/// A frame: a container whose fields belong to it, not to the form around it. Frames are written
/// to XML with their name as prefix of their fields' IDs ("Ambient.Pressure") and are not part of
/// the form's stream. One frame class can be placed on several forms.
class QXNUM_WIDGETS_EXPORT TFieldFrame : public QFrame {
    Q_OBJECT
public:
    explicit TFieldFrame(QWidget* Parent = nullptr);
    ~TFieldFrame() override;

private:
    const std::unique_ptr<TFieldFramePrivate> d;
};

class QXNUM_WIDGETS_EXPORT TFieldForm : public QDialog {
    Q_OBJECT
    Q_PROPERTY(bool VersionUpdated MEMBER VersionUpdated)
    Q_PROPERTY(bool RevertingToDefaults MEMBER RevertingToDefaults)
    Q_PROPERTY(qxnum::TReadResultCode ReadResultCode MEMBER ReadResultCode)
    Q_PROPERTY(int HelpContext READ HelpContext WRITE SetHelpContext)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setHelpContext(int AValue) { SetHelpContext(AValue); }

    explicit TFieldForm(QWidget* Parent = nullptr);
    ~TFieldForm() override;

    /// --- Public state, as in the classic form ---
    /// Marker that ends the recovery skip of a stream read (see the header comment).
    TStreamCode EndCode = NullStreamCode;
    TReadResultCode ReadResultCode = rrcOk;
    /// Set by an XML read that deleted stale field data: the document should be saved.
    bool VersionUpdated = false;
    bool RevertingToDefaults = false;
    /// The node last passed to CustomReadFromXML / CustomWriteToXML.
    TXmlNode FormXmlRootNode;

    /// --- Controls ---
    /// The area above the button panel, where a derived form puts its fields (it has no layout; a
    /// form sets one). Fields may also be placed anywhere else on the form.
    QWidget* ClientArea() const;
    QWidget* BottomButtonsPanel() const;
    QPushButton* OKbtn() const;
    QPushButton* Cancelbtn() const;
    QPushButton* HelpBtn() const;
    /// Help topic of the Help button (0: the button asks for topic 0).
    int HelpContext() const;
    void SetHelpContext(int AValue);

    /// --- Persistence ---
    /// Stream: signature, list of (class name, component name, the field's record) for each directly
    /// owned field that is saved, CustomWriteToStream, list end, FieldFormEndCode.
    void WritetoStream(TWriter& Writer);
    void ReadfromStream(TReader& Reader, bool Warn);
    /// One "INumFld" element per field (fields of frames with the frame's name as prefix), updated
    /// in place when present; then CustomWriteToXML.
    void WriteToXML(TXmlNode ParentXmlNode);
    void ReadFromXML(TXmlNode ParentXmlNode, bool Warn);
    /// Hooks of a derived form for data of its own. The base stream hook writes the string
    /// "CustomWriteToStream", which also tells the reader where the derived data starts; a
    /// derived hook calls the base first. The base read hook reads nothing; the XML hooks only
    /// remember the node in FormXmlRootNode.
    virtual void CustomWriteToStream(TWriter& Writer);
    virtual void CustomReadFromStream(TReader& Reader);
    virtual void CustomWriteToXML(TXmlNode Node);
    virtual void CustomReadFromXML(TXmlNode Node);

    /// The field named NumFldID, or "Frame.Field" for a field of a frame (the frame's own name is
    /// not compared: the first frame holding such a field wins). Names are compared exactly; when
    /// no object name matches, the fields' ID strings are tried the same way.
    QObject* FindNumFld(const QString& NumFldID) const;
    /// Declares that a field once stored under OldID is now the field NewID ("Frame.Field" for a
    /// field of a frame in XML): reads in both media carry its value over (see the header
    /// comment). A later alias for the same OldID replaces the earlier one.
    void AddFieldAlias(const QString& OldID, const QString& NewID);
    /// The form's name (objectName), used in every message.
    QString IDstr() const;

    /// --- Life cycle ---
    /// Clears ReadResultCode, VersionUpdated and RevertingToDefaults and takes every directly
    /// owned field's creation value.
    void FormCreate();
    void SetCopyValues();
    /// Sets RevertingToDefaults and returns the fields that are visible (ControlIsVisible), or all
    /// of them with AlsoIfInvisible, to their creation values.
    void ResetToCreateFormState(bool AlsoIfInvisible);
    /// Whether a control counts as shown: its own Visible flag (for a tab page: being the current
    /// page) and that of every parent up to the form. A hidden form does not hide its controls.
    bool ControlIsVisible(const QWidget* AControl) const;
    /// Shows the form modally with the focus on a field (tab pages on the way made current), or
    /// only brings it up when it is already visible (result mrNone). The result is a modal
    /// result: mrOk, mrCancel, or the code given to done().
    int ShowModalFocused(const QString& FocusControlName);
    /// Copies every field's value from the same-named field of Source (frames likewise). Source
    /// must be of the same class; otherwise EConvertError "Cannot assign a X to a Y".
    void Assign(const TFieldForm& Source);

    /// The modal result of the last close: mrOk, mrCancel, another done() code, or mrNone while
    /// the form is open.
    int ModalResult() const;

public Q_SLOTS:
    void done(int r) override;

protected:
    /// OK's click: evaluates a TNumFld that has the focus and accepts unless it refuses its text.
    virtual void OKbtnClick();
    virtual void HelpBtnClick();
    virtual void FormShow();
    /// Confirms (mrOk) or restores (mrCancel) every field; then the focus goes to OKbtn.
    virtual void FormClose(int AModalResult);

    void showEvent(QShowEvent* E) override;

private:
    void EnsureCreated();
    const std::unique_ptr<TFieldFormPrivate> d;
    friend class TFieldFormPrivate;
};

/// Writes one field's "INumFld" element under Node (ID: Prefix + the field's ID string), creating it
/// when no child element has that ID. Nothing for a field that is not to be saved or not a field.
QXNUM_WIDGETS_EXPORT void WriteINumFldToXml(TXmlNode Node, QObject* Component, const QString& Prefix);

/// Appends one report line for an edit control: the caption in a column of 40 characters, the
/// edit's text and the parameter identifier, separated by one blank ("Pressure<32 blanks> 101.325
/// kPa"). A caption longer than 60 characters gets a line of its own and the value line an empty
/// caption column; a caption of 41 to 60 characters widens the column for its own line only.
QXNUM_WIDGETS_EXPORT void TEditToLines(QStringList& Lines, const QString& Caption, const QString& ParID,
                                       const QLineEdit* Edit);

} // namespace qxnum
