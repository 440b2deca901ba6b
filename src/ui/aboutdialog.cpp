#include "aboutdialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(tr("Tietoja"));

    QLabel* name = new QLabel(QStringLiteral("<h2>Veklari %1</h2>").arg(version()));
    name->setObjectName(QStringLiteral("nameLabel"));
    QLabel* description = new QLabel(
        tr("Laskutusohjelma pienyritykselle. Veklarilla kirjoitat laskut, hyvityslaskut, "
           "maksumuistutukset ja kuitit, tulostat ne tai tallennat PDF-tiedostoiksi, teet "
           "verkkolaskut ja kirjaat maksusuoritukset. Tiedot säilyvät SQLite-tiedostossa "
           "tai PostgreSQL-tietokannassa."));
    description->setObjectName(QStringLiteral("descriptionLabel"));
    description->setWordWrap(true);
    QLabel* copyright = new QLabel(tr("© Veklari"));
    copyright->setObjectName(QStringLiteral("copyrightLabel"));

    QDialogButtonBox* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setText(tr("&Sulje"));
    connect(buttons, &QDialogButtonBox::rejected, this, &AboutDialog::reject);

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(name);
    layout->addWidget(description);
    layout->addWidget(copyright);
    layout->addStretch(1);
    layout->addWidget(buttons);
    setMinimumWidth(460);
}

QString AboutDialog::version()
{
    return QStringLiteral(VEKLARI_VERSION);
}
