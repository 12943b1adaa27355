#pragma once

#include <QString>

/// Names of the results document. A captured window is a `Window` element with the children
/// `TriggerPosition`, `Signals` (the samples) and `Layout` (rows, buses and dividers), in this
/// order. All names are case-sensitive.
namespace VEK {

inline QString const DOM_TAG_WAVE_DATA = QStringLiteral("WaveData"); ///< Root of the batch run.
inline QString const DOM_TAG_WINDOW = QStringLiteral("Window");
inline QString const DOM_TAG_TRIGGER_POSITION = QStringLiteral("TriggerPosition");
inline QString const DOM_TAG_SIGNALS = QStringLiteral("Signals");
inline QString const DOM_TAG_SIGNAL = QStringLiteral("Signal");
inline QString const DOM_TAG_LAYOUT = QStringLiteral("Layout");
inline QString const DOM_TAG_NODE = QStringLiteral("Node");
inline QString const DOM_TAG_FORMAT = QStringLiteral("Format"); ///< Read by exports, never written.

inline QString const DOM_ATTR_WINDOW_INDEX = QStringLiteral("index");
inline QString const DOM_ATTR_TRIGGER_SEGMENTS = QStringLiteral("segments");

inline QString const DOM_ATTR_SIGNAL_NAME = QStringLiteral("name");
inline QString const DOM_ATTR_SIGNAL_ID = QStringLiteral("id");
inline QString const DOM_ATTR_SIGNAL_TEXT = QStringLiteral("text");

inline QString const DOM_ATTR_NODE_TYPE = QStringLiteral("type");
inline QString const DOM_ATTR_NODE_ID = QStringLiteral("id");
inline QString const DOM_ATTR_NODE_NAME = QStringLiteral("name");
inline QString const DOM_ATTR_NODE_TEXT = QStringLiteral("text");
inline QString const DOM_ATTR_NODE_FORMAT = QStringLiteral("format");
inline QString const DOM_ATTR_NODE_COLOR = QStringLiteral("color");
inline QString const DOM_ATTR_NODE_NAMETYPE = QStringLiteral("nametype");
inline QString const DOM_ATTR_NODE_REALTYPE = QStringLiteral("realtype");
inline QString const DOM_ATTR_NODE_REALPOINT = QStringLiteral("realpoint");
inline QString const DOM_ATTR_NODE_ROWHEIGHT = QStringLiteral("rowheight");

inline QString const DOM_VAL_NODE_T_SIG = QStringLiteral("sig");
inline QString const DOM_VAL_NODE_T_BUS = QStringLiteral("bus");
inline QString const DOM_VAL_NODE_T_DIVIDER = QStringLiteral("divider");

} // namespace VEK
