"""A registrar that falls silent or refuses, and recovers: the line reports it, keeps trying, and registers as soon as
possible. Meanwhile the telephone answers its applications.
"""

import unittest

from harness import FAST_TIMERS, Registrar, Telephone, until

# Seconds. With fast timers an unanswered request fails after 4 of them.
SILENT = 20
NO_ANSWER, REFUSED = 3, 2


def lines_at(registrar):
    return (f"[[line]]\nid = \"4711\"\npassword = \"secret\"\n[server]\nregistrar = \"sip:127.0.0.1:{registrar.port}\"\n"
            "expires = 10\nmessage-waiting = false\n[exchange]\nenabled = false\n")


class RegistrarFaults(unittest.TestCase):
    def at(self, how):
        registrar = Registrar(how)
        self.addCleanup(registrar.close)
        telephone = Telephone(lines_at(registrar), environment=FAST_TIMERS)
        self.addCleanup(telephone.__exit__, None, None, None)
        return registrar, telephone, telephone.application()

    def require_service(self, application):
        self.assertEqual(application.ask("GetServiceState", 2), "sfiSuccess,sfiServiceInService")

    def test_silent_registrar_that_comes_back(self):
        registrar, _, application = self.at("silent")
        until(lambda: registrar.has("REGISTER"), 10, "no REGISTER arrived")
        self.require_service(application)
        application.wait("RegistrationStateChangeEvent", SILENT, LineID=4711, Registered=0, RegistrationResult=NO_ANSWER)

        registrar.how = "accepts"

        application.wait("RegistrationStateChangeEvent", SILENT, LineID=4711, Registered=1, RegistrationResult=0)

    def test_registrar_that_refuses_and_comes_back(self):
        registrar, _, application = self.at("accepts")
        until(lambda: registrar.has("REGISTER"), 10, "no REGISTER arrived")

        registrar.how = "refuses"

        application.wait("RegistrationStateChangeEvent", 20, LineID=4711, Registered=0, RegistrationResult=REFUSED)
        self.require_service(application)

        registrar.how = "accepts"

        application.wait("RegistrationStateChangeEvent", SILENT, LineID=4711, Registered=1, RegistrationResult=0)

    def test_registrar_that_falls_silent_and_comes_back(self):
        registrar, _, application = self.at("accepts")
        until(lambda: registrar.has("REGISTER"), 10, "no REGISTER arrived")

        registrar.how = "silent"

        application.wait("RegistrationStateChangeEvent", SILENT, LineID=4711, Registered=0,
                         RegistrationResult=NO_ANSWER)
        self.require_service(application)
        application.events.clear()
        registrar.how = "accepts"
        application.wait("RegistrationStateChangeEvent", SILENT, LineID=4711, Registered=1)


if __name__ == "__main__":
    unittest.main()
