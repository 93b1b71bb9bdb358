#pragma once

#include <QString>
#include <QStringList>

namespace MirlPlayer {

class Preferences;

// The shipped look reaches a machine that has never run the program, while a machine with any
// history keeps what it has. Returns whether the shipped values were written.
bool seedFactoryPreferences(Preferences& prefs, const QString& resourcePath);

// The keys the shipped defaults may set.
const QStringList& factoryPreferenceKeys();

} // namespace MirlPlayer
