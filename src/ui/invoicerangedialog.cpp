#include "invoicerangedialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSpinBox>
#include <QVBoxLayout>
#include <limits>

InvoiceRangeDialog::InvoiceRangeDialog(const QString& title, int first, int last, QWidget* parent)
    : QDialog(parent), m_firstSpin(new QSpinBox(this)), m_lastSpin(new QSpinBox(this))
{
    setWindowTitle(title);
    for (QSpinBox* spin : { m_firstSpin, m_lastSpin })
        spin->setRange(0, std::numeric_limits<int>::max());
    m_firstSpin->setValue(first);
    m_lastSpin->setValue(last);
    // The range stays in order whichever end is moved.
    connect(m_firstSpin, qOverload<int>(&QSpinBox::valueChanged), this, [this](int value) {
        if (m_lastSpin->value() < value)
            m_lastSpin->setValue(value);
    });
    connect(m_lastSpin, qOverload<int>(&QSpinBox::valueChanged), this, [this](int value) {
        if (m_firstSpin->value() > value)
            m_firstSpin->setValue(value);
    });
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    form->addRow(tr("&Ensimmäinen lasku:"), m_firstSpin);
    form->addRow(tr("&Viimeinen lasku:"), m_lastSpin);
    layout->addLayout(form);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

int InvoiceRangeDialog::firstNumber() const
{
    return m_firstSpin->value();
}

int InvoiceRangeDialog::lastNumber() const
{
    return m_lastSpin->value();
}
