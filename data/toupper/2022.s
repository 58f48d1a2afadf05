# The upper case of IBM862.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as CP862.
# These stay as they are, since the set does not have their upper case:
# \x9F \xA0 \xA1 \xA2 \xA3 \xE0 \xE1 \xE3 \xE6 \xE7 \xEB \xEE

TOUPPER CHARSET IBM862

a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O p=P q=Q r=R s=S
t=T u=U v=V w=W x=X y=Y z=Z \xA4=\xA5 \xE5=\xE4 \xED=\xE8
