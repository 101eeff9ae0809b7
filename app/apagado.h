#pragma once

class QObject;

// Quiets an object that is about to go away (a dialog being closed): stops every timer below
// it, cuts its access managers' replies off from their handlers and aborts the requests still
// out, and kills the outside programs it runs. Nothing it started can act after this call,
// not even in the short time before the object is actually deleted.
//
// Dialogs call it first thing in their destructors too: children are destroyed before the
// object's own connections are cut, and a reply or process ending in between must not reach a
// handler of a half-destroyed dialog.
void apagarObjeto(QObject *raiz);
