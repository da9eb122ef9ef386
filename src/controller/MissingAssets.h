#pragma once

class QJsonValue;

/// Whether a document names missing assets: the first member "MissingAssets" that a walk, depth first, meets has a
/// value other than null.
bool namesMissingAssets(const QJsonValue& document);
