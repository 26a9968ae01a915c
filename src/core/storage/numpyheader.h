#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

// The header dictionary of a NumPy array file.
struct NumpyArrayHeader
{
    QByteArray descr;
    bool fortranOrder = false;
    std::vector<qint64> shape;
};

namespace NumpyHeader {

// A strict reader of the Python literal NumPy writes: {'descr': '<u4', 'fortran_order': False,
// 'shape': (480, 640), } with each key exactly once, padded with blanks. Throws DescribedException
// titled title, naming path, for anything else.
NumpyArrayHeader parse(const QByteArray &text, const QString &path, const QString &title);

// "The NumPy header of\n'PATH'\nis not valid: WHY."
[[noreturn]] void fail(const QString &path, const QString &why, const QString &title);

} // namespace NumpyHeader
