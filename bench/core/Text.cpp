#include "bench/core/Text.h"

#include <algorithm>

namespace bench {

QString escaped(const QString &text)
{
    QString line;
    for (const QChar letter : text) {
        const ushort code = letter.unicode();
        if (code < 0x20 || code > 0x7E || letter == QLatin1Char('\\')) {
            line += QStringLiteral("\\x%1").arg(QString::number(code, 16).toUpper(), 2, QLatin1Char('0'));
        } else {
            line += letter;
        }
    }
    return line;
}

bool unescape(const QString &text, QString *plain)
{
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i).unicode() > 0xFF) {
            return false;
        }
        if (text.at(i) != QLatin1Char('\\')) {
            result += text.at(i);
            continue;
        }
        bool valid = text.mid(i + 1, 1) == QLatin1String("x") && text.size() >= i + 4;
        const uint code = valid ? text.mid(i + 2, 2).toUInt(&valid, 16) : 0;
        if (!valid) {
            return false;
        }
        result += QChar(static_cast<ushort>(code));
        i += 3;
    }
    *plain = result;
    return true;
}

QString shellQuoted(const QString &text)
{
    const bool plain = !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar letter) {
        return letter.isLetterOrNumber() || QStringLiteral("-_./,=:+%@").contains(letter);
    });
    if (plain) {
        return text;
    }
    QString quoted = text;
    quoted.replace(QLatin1Char('\''), QStringLiteral("'\\''"));
    quoted.replace(QLatin1Char('\n'), QStringLiteral("'$'\\n''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

} // namespace bench
