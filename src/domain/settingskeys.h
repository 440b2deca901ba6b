#ifndef SETTINGSKEYS_H
#define SETTINGSKEYS_H

#include <QString>

// The keys of the company settings' property map: the business's choices
// that travel with its database.
namespace SettingsKeys {
inline const QString paymentTerms = QStringLiteral("settings/paymentTerms");
inline const QString periodForComplaints = QStringLiteral("settings/periodForComplaints");
inline const QString interestOnArrears = QStringLiteral("settings/interestOnArrears");
inline const QString interestProduct = QStringLiteral("settings/productForInterestOnArrears");
inline const QString referenceNumberTemplate = QStringLiteral("settings/referenceNumberTemplate");
inline const QString referenceNumberSuffix = QStringLiteral("settings/referenceNumberSuffix");
inline const QString defaultBankAccount = QStringLiteral("settings/defaultBankAccount");
inline const QString vatIncluded = QStringLiteral("settings/vatIncluded");
inline const QString invoiceScript = QStringLiteral("printScripts/invoice");

// Printed invoices.
inline const QString invoiceFormGroup = QStringLiteral("invoiceForm/");
inline const QString language = QStringLiteral("invoiceForm/language");
inline const QString invoiceItemOptions = QStringLiteral("invoiceForm/invoiceItemOptions");
inline const QString roundingMode = QStringLiteral("invoiceForm/roundingMode");
inline const QString barcodeVisible = QStringLiteral("invoiceForm/barcodeVisible");
// The payment QR code beside the barcode; on when the key is missing.
inline const QString qrCode = QStringLiteral("invoiceForm/qrCode");
inline const QString logoHeight = QStringLiteral("invoiceForm/logoHeight");
inline const QString noticeText1 = QStringLiteral("invoiceForm/noticeText1");
inline const QString noticeText2 = QStringLiteral("invoiceForm/noticeText2");
inline const QString reminderText = QStringLiteral("invoiceForm/reminderText");
// "%1" is the line, 1 to 4.
inline const QString footerText = QStringLiteral("invoiceForm/footer/text%1");
inline const QString printPreview = QStringLiteral("invoiceForm/printPreview");
inline const QString numberOfCopies = QStringLiteral("invoiceForm/numberOfCopies");

// The seller's contact details beside the settings record's own fields.
inline const QString sellerGroup = QStringLiteral("seller/");
inline const QString phoneNumber = QStringLiteral("seller/phoneNumber");
inline const QString emailAddress = QStringLiteral("seller/emailAddress");
inline const QString webAddress = QStringLiteral("seller/webAddress");

// E-invoices.
inline const QString finvoiceGroup = QStringLiteral("finvoice/");
inline const QString edi = QStringLiteral("finvoice/edi");
inline const QString senderId = QStringLiteral("finvoice/senderId");
inline const QString intermediatorId = QStringLiteral("finvoice/intermediatorId");
inline const QString defaultReceiverId = QStringLiteral("finvoice/defaultReceiverId");
inline const QString epiInstructionId = QStringLiteral("finvoice/epiInstructionId");
inline const QString soapEnv = QStringLiteral("finvoice/soapEnv");
inline const QString xmlSchema = QStringLiteral("finvoice/xmlSchema");

// Group invoicing: customer groups ("%1" the group's index from 0) and the
// range of invoices the last run created, which undo removes.
inline const QString groupPrefix = QStringLiteral("groups/");
inline const QString groupName = QStringLiteral("groups/%1/name");
inline const QString groupCustomers = QStringLiteral("groups/%1/customers");
inline const QString copyFirstId = QStringLiteral("copy/firstId");
inline const QString copyLastId = QStringLiteral("copy/lastId");
inline const QString copyFirstNumber = QStringLiteral("copy/firstNumber");
inline const QString copyLastNumber = QStringLiteral("copy/lastNumber");
inline const QString copyDate = QStringLiteral("copy/date");

// Messages handed to the mail program.
inline const QString emailSubject = QStringLiteral("email/subject");
inline const QString emailBody = QStringLiteral("email/body");
inline const QString attachmentName = QStringLiteral("email/attachmentName");
// Invoices from time entries: "%1" is the index of a mapping (0, 1, 2, ...);
// the choices of the last run.
inline const QString raveloGroup = QStringLiteral("ravelo/");
inline const QString raveloCustomerGroup = QStringLiteral("ravelo/customers/");
inline const QString raveloCustomerName = QStringLiteral("ravelo/customers/%1/name");
inline const QString raveloCustomerId = QStringLiteral("ravelo/customers/%1/id");
inline const QString raveloWorkTypeGroup = QStringLiteral("ravelo/workTypes/");
inline const QString raveloWorkTypeName = QStringLiteral("ravelo/workTypes/%1/name");
inline const QString raveloWorkTypeProduct = QStringLiteral("ravelo/workTypes/%1/productId");
inline const QString raveloItemization = QStringLiteral("ravelo/itemization");
inline const QString raveloRoundingStep = QStringLiteral("ravelo/roundingStep");
inline const QString raveloRoundUp = QStringLiteral("ravelo/roundUp");

// Bank files: the timestamp of the last file whose payments were saved and
// the bank account chosen then.
inline const QString irpLastTimestamp = QStringLiteral("irp/lastTimestamp");
inline const QString irpBankAccount = QStringLiteral("irp/bankAccount");
} // namespace SettingsKeys

#endif // SETTINGSKEYS_H
